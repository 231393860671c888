#pragma once

#include "model/update_checking.h"
#include "platform/dynamic_library.h"

#include <thread>
#include <vector>

namespace sonvel {

/// A consent framework with scripted answers. One at a time. Main thread.
class ScriptedConsent final : public DynamicLibraries {
 public:
  ScriptedConsent() { current_ = this; }

  /// The preflight result: 0 is authorized, 1 denied, another value undetermined; none: no such function, and
  /// the status is unknown.
  void setPreflight(std::optional<int> value) { preflight_ = value; }

  /// Whether the function for asking the user exists.
  void setRequestable(bool isRequestable) { isRequestable_ = isRequestable; }

  /// Requests without an answer.
  std::size_t openRequests() const { return requests_.size(); }

  /// Answers the oldest request on a thread of its own, and waits until the answer was received.
  void answer(bool isGranted) {
    std::thread(std::move(requests_.at(0)), isGranted).join();
    requests_.erase(requests_.begin());
  }

  std::optional<LibraryHandle> open(const char*, int) override { return LibraryHandle{1}; }

  Function symbol(LibraryHandle, const char* name) override {
    const bool isPreflight = name == std::string("TCCAccessPreflight");
    if (isPreflight ? !preflight_ : !isRequestable_) return nullptr;
    return isPreflight ? reinterpret_cast<Function>(&preflight) : reinterpret_cast<Function>(&request);
  }

 private:
  static int preflight(const char*, const void*) { return *current_->preflight_; }

  static void request(const char*, const void*, std::function<void(bool)> completion) {
    current_->requests_.push_back(std::move(completion));
  }

  static inline ScriptedConsent* current_ = nullptr;
  std::optional<int> preflight_ = 0;
  bool isRequestable_ = true;
  std::vector<std::function<void(bool)>> requests_;
};

/// Counts the calls.
class CountedUpdates final : public UpdateChecking {
 public:
  bool isAvailable() const override { return available; }

  void checkForUpdates() override { ++checks; }

  bool available = false;
  int checks = 0;
};

} // namespace sonvel
