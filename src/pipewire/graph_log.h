#pragma once

#include <chrono>

namespace sonvel::pipewire {

/// Writes every edit of the graph and every refusal of the server to standard error from now on. Without this
/// call they are written only if PIPEWIRE_DEBUG asks for it: PIPEWIRE_DEBUG=sonvel:I. Call before the first
/// connection, or with the loop's lock held.
void setVerbose();

/// Logs one edit of the graph and its reason, formatted as by printf. Not from the real-time thread.
[[gnu::format(printf, 1, 2)]] void logEdit(const char* format, ...);

/// Logs a refusal of the server or the library, with its message. Not from the real-time thread.
[[gnu::format(printf, 1, 2)]] void logRefusal(const char* format, ...);

/// Logs that the engine's thread, which does one thing at a time, was busy for so long; nothing below 50 ms.
void logBusy(std::chrono::steady_clock::duration time);

} // namespace sonvel::pipewire
