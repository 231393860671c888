#pragma once

#include "model/update_checking.h"
#include "platform/dynamic_library.h"
#include "platform/preferences.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace sonvel {

/// A consent framework whose answers a test gives. One exists at a time. Any thread.
class ScriptedConsent final : public DynamicLibraries {
 public:
  ScriptedConsent();
  ~ScriptedConsent() override;
  ScriptedConsent(const ScriptedConsent&) = delete;
  ScriptedConsent& operator=(const ScriptedConsent&) = delete;

  /// What the preflight gives: 0 is authorized, 1 denied, another value undetermined; none: it can't be
  /// found, and the status is unknown.
  void setPreflight(std::optional<int> value);

  /// Whether there is a function to ask the user with.
  void setRequestable(bool isRequestable);

  /// The requests that wait for an answer.
  std::size_t openRequests() const;

  /// Answers the oldest request, on a thread of its own, and waits until that has been taken.
  void answer(bool isGranted);

  std::optional<LibraryHandle> open(const char* path, int mode) override;
  Function symbol(LibraryHandle library, const char* name) override;

 private:
  static int preflight(const char* service, const void* options);
  static void request(const char* service, const void* options, std::function<void(bool)> completion);

  mutable std::mutex mutex_; ///< guards the next three
  std::optional<int> preflight_ = 0;
  bool isRequestable_ = true;
  std::vector<std::function<void(bool)>> requests_;
};

/// Preferences in memory.
class MemoryPreferences final : public Preferences {
 public:
  bool boolForKey(const std::string& key) const override { return values.contains(key) && values.at(key); }

  bool setBool(bool value, const std::string& key) override {
    values[key] = value;
    return true;
  }

  std::optional<std::string> stringForKey(const std::string& key) const override {
    return texts.contains(key) ? std::optional(texts.at(key)) : std::nullopt;
  }

  bool setString(const std::string& value, const std::string& key) override {
    texts[key] = value;
    return true;
  }

  std::map<std::string, bool> values;
  std::map<std::string, std::string> texts;
};

/// Counts what it is asked for.
class CountedUpdates final : public UpdateChecking {
 public:
  bool isAvailable() const override { return available; }

  void checkForUpdates() override { ++checks; }

  bool available = false;
  int checks = 0;
};

} // namespace sonvel
