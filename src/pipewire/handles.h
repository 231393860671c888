#pragma once

#include <pipewire/pipewire.h>

#include <memory>
#include <utility>

namespace sonvel::pipewire {

/// Frees a libpipewire object with its own destroy function.
template <auto destroy> struct Destroy {
  template <class Object> void operator()(Object* object) const noexcept { destroy(object); }
};

using ThreadLoopHandle = std::unique_ptr<pw_thread_loop, Destroy<pw_thread_loop_destroy>>;
using ContextHandle = std::unique_ptr<pw_context, Destroy<pw_context_destroy>>;
using CoreHandle = std::unique_ptr<pw_core, Destroy<pw_core_disconnect>>;
using PropertiesHandle = std::unique_ptr<pw_properties, Destroy<pw_properties_free>>;
using ProxyHandle = std::unique_ptr<pw_proxy, Destroy<pw_proxy_destroy>>;

/// The proxy behind an interface pointer such as pw_node or pw_metadata.
template <class Interface> pw_proxy* asProxy(Interface* object) noexcept {
  return reinterpret_cast<pw_proxy*>(
      object); // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast): as the library does
}

template <class Interface> Interface* fromProxy(const ProxyHandle& proxy) noexcept {
  return reinterpret_cast<Interface*>(
      proxy.get()); // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast): as above
}

/// A listener on a libpipewire object, removed on destruction. Declare it after the handle it listens to.
class Hook {
 public:
  Hook() = default;
  Hook(const Hook&) = delete;
  Hook& operator=(const Hook&) = delete;

  ~Hook() { remove(); }

  spa_hook* get() noexcept { return &hook_; }

  void remove() noexcept {
    if (hook_.link.next != nullptr) spa_hook_remove(&hook_);
    hook_ = {};
  }

 private:
  spa_hook hook_{};
};

} // namespace sonvel::pipewire
