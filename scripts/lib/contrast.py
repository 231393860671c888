"""Measures how legible the texts and symbols in a picture are."""
import numpy

TEXT, SYMBOL = 4.5, 3.0
# The edges of letters are blurred, and the parts of a control's border may be darker than its text.
UNUSUAL = 4


def luminance(points):
    """Of colours 0xRRGGBB, as WCAG defines it."""
    channels = numpy.stack([points >> shift & 255 for shift in (16, 8, 0)], -1) / 255
    linear = numpy.where(channels <= 0.04045, channels / 12.92, ((channels + 0.055) / 1.055) ** 2.4)
    return linear @ (0.2126, 0.7152, 0.0722)


def contrast(points):
    """Of what is drawn on the commonest colour. 1: nothing is."""
    colors, counts = numpy.unique(points, return_counts=True)
    background, seen = luminance(colors[counts.argmax()]), luminance(colors)
    ratios = (numpy.maximum(seen, background) + 0.05) / (numpy.minimum(seen, background) + 0.05)
    strongest = ratios.argsort()[::-1]
    return ratios[strongest][counts[strongest].cumsum() > UNUSUAL][0]


def check(points, places):
    """Fails if something has too little contrast; otherwise returns the lowest contrast of a text. places: name, x, y,
    width and height in the picture."""
    lowest, faults = 21.0, []
    for name, x, y, width, height in places:
        measured = contrast(points[max(y, 0):y + height, max(x, 0):x + width])
        is_text = width > 1.3 * height  # a symbol is about as high as wide
        if is_text:
            lowest = min(lowest, measured)
        if measured < (TEXT if is_text else SYMBOL):
            faults.append(f"{name!r} has a contrast of {measured:.2f}")
    assert places and not faults, "; ".join(faults) or "no texts to measure"
    return lowest
