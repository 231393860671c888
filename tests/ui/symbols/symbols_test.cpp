#include "ui/symbols/symbol_image_provider.h"
#include "ui/symbols/symbols.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSet>

namespace sonvel {
namespace {

const QStringList kUsedNames = {
    "arrow.down",       "arrow.triangle.branch", "arrow.uturn.backward", "bolt.fill",
    "checkmark",        "exclamationmark",       "headphones",           "hifispeaker",
    "hifispeaker.fill", "lock.shield",           "slider.vertical.3",    "speaker.slash.fill",
    "speaker.wave.2",   "speaker.wave.2.fill",   "xmark.circle.fill"};

/// How many pixels are filled, and how many lie on an edge.
struct Coverage {
  int full = 0;
  int partial = 0;
  int ofOtherColor = 0;

  double blur() const { return static_cast<double>(partial) / full; }
};

Coverage coverage(const QImage& image, const QColor& color) {
  Coverage found;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const auto pixel = image.pixelColor(x, y);
      if (pixel.alpha() == 255) ++(pixel.rgb() == color.rgb() ? found.full : found.ofOtherColor);
      if (pixel.alpha() > 0 && pixel.alpha() < 255) ++found.partial;
    }
  return found;
}

bool touchesBorder(const QImage& image) {
  for (int i = 0; i < image.width(); ++i)
    for (const auto point :
         {QPoint(i, 0), QPoint(i, image.height() - 1), QPoint(0, i), QPoint(image.width() - 1, i)})
      if (image.pixelColor(point).alpha() > 0) return true;
  return false;
}

class Symbols : public testing::Test {
 protected:
  const QColor orange_{"#ff9500"};
};

TEST_F(Symbols, AreThoseThatThePanelUsesEachADrawingOfItsOwnInTheColorAskedFor) {
  auto names = QDir(":/sonvel/symbols").entryList().replaceInStrings(".svg", "");
  names.sort();
  EXPECT_EQ(names.join(' ').toStdString(), kUsedNames.join(' ').toStdString());
  QSet<QByteArray> drawings;
  for (const auto& name : kUsedNames) {
    SCOPED_TRACE(name.toStdString());
    const auto image = symbolImage(name, orange_, QSize(48, 48));
    ASSERT_EQ(image.size(), QSize(48, 48));
    const auto found = coverage(image, orange_);
    EXPECT_GT(found.full, 40);
    EXPECT_EQ(found.ofOtherColor, 0);
    EXPECT_FALSE(touchesBorder(image));
    drawings.insert(QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
  }
  EXPECT_EQ(drawings.size(), kUsedNames.size());
}

TEST_F(Symbols, AreDrawnForTheSizeInsteadOfScaled) {
  const auto small = symbolImage("headphones", orange_, QSize(24, 24));
  const auto large = symbolImage("headphones", orange_, QSize(192, 192));
  EXPECT_LT(coverage(large, orange_).blur(), coverage(small, orange_).blur() / 4);
  const auto wide = symbolImage("headphones", orange_, QSize(40, 24));
  EXPECT_EQ(wide.copy(8, 0, 24, 24), small);
}

TEST_F(Symbols, AreGivenToQmlByNameAndColor) {
  const struct {
    const char* id;
    QSize requested;
    QSize expected;
  } cases[] = {
      {"bolt.fill/ff9500", {36, 36}, {36, 36}},
      {"bolt.fill/80ff9500", {36, 36}, {36, 36}},
      {"bolt.fill/ff9500", {}, {24, 24}},
      {"bolt.fill/ff9500", {0, 30}, {30, 30}},
      {"bolt.fill/ff9500", {30, 0}, {30, 30}},
      {"bolt/ff9500", {36, 36}, {}},
      {"bolt.fill/orangish", {36, 36}, {}},
      {"bolt.fill", {36, 36}, {}},
      {"/ff9500", {36, 36}, {}},
      {"", {36, 36}, {}},
  };

  SymbolImageProvider provider;
  for (const auto& [id, requested, expected] : cases) {
    SCOPED_TRACE(id);
    QSize size;
    const auto image = provider.requestImage(id, &size, requested);
    EXPECT_EQ(image.isNull(), expected.isEmpty());
    EXPECT_EQ(image.size(), image.isNull() ? QSize(0, 0) : expected);
    EXPECT_EQ(size, image.size());
  }
  const auto centre = [&](const char* id) {
    return provider.requestImage(id, nullptr, QSize(24, 24)).pixelColor(12, 12);
  };
  EXPECT_EQ(centre("bolt.fill/ff9500"), orange_);
  EXPECT_EQ(centre("bolt.fill/80ff9500").alpha(), 0x80);
}

TEST_F(Symbols, AreIconsThatFillTheSizesOfATray) {
  const auto icon = symbolIcon("slider.vertical.3", orange_);
  for (const int side : {16, 22, 24, 48}) {
    const auto image = icon.pixmap(QSize(side, side), 1.0).toImage();
    EXPECT_EQ(image.convertToFormat(QImage::Format_ARGB32_Premultiplied),
              symbolImage("slider.vertical.3", orange_, QSize(side, side)));
  }
  EXPECT_TRUE(symbolIcon("slider.vertical.4", orange_).isNull());
}

} // namespace
} // namespace sonvel
