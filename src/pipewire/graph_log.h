#pragma once

namespace sonvel::pipewire {

/// Tells every edit of the graph and every refusal of the server on standard error from now on. Without it
/// they are told where PIPEWIRE_DEBUG asks for them: PIPEWIRE_DEBUG=sonvel:I. Before the first connection, or
/// with the loop's lock held.
void setVerbose();

/// One edit of the graph with its reason, formatted as by printf. Not from the real-time thread.
[[gnu::format(printf, 1, 2)]] void logEdit(const char* format, ...);

/// Something that the server or the library refused, with its own words. Not from the real-time thread.
[[gnu::format(printf, 1, 2)]] void logRefusal(const char* format, ...);

} // namespace sonvel::pipewire
