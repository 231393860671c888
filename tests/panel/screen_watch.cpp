#include "panel/screen_watch.h"

#include <span>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <xcb/xcb.h>

namespace sonvel::testing {

namespace {

constexpr std::int16_t kHeadingTop = 8;
constexpr std::uint16_t kHeadingHeight = 24;
constexpr std::uint16_t kHeadingWidth = 200;
constexpr unsigned kLongestTitle = 64; // in units of four bytes

template <class T> auto own(T* reply) {
  return std::unique_ptr<T, decltype(&std::free)>(reply, &std::free);
}

} // namespace

void ScreenWatch::Disconnect::operator()(xcb_connection_t* connection) const noexcept {
  xcb_disconnect(connection);
}

ScreenWatch::ScreenWatch(const std::string& display)
    : connection_(xcb_connect(display.c_str(), nullptr)) {
  if (xcb_connection_has_error(connection_.get()) != 0) throw std::runtime_error("no display " + display);
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
}

/// 0 when there is none.
unsigned ScreenWatch::find(const std::string& title) const {
  auto* const server = connection_.get();
  const auto tree = own(xcb_query_tree_reply(server, xcb_query_tree(server, root_), nullptr));
  if (!tree) return 0;
  const std::span windows(xcb_query_tree_children(tree.get()), tree->children_len);
  for (const auto window : windows) {
    const auto asked = xcb_get_window_attributes(server, window);
    const auto askedName =
        xcb_get_property(server, 0, window, XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 0, kLongestTitle);
    const auto attributes = own(xcb_get_window_attributes_reply(server, asked, nullptr));
    const auto name = own(xcb_get_property_reply(server, askedName, nullptr));
    if (!attributes || !name || attributes->map_state != XCB_MAP_STATE_VIEWABLE) continue;
    const std::string_view text(static_cast<const char*>(xcb_get_property_value(name.get())),
                                static_cast<std::size_t>(xcb_get_property_value_length(name.get())));
    if (text == title) return window;
  }
  return 0;
}

bool ScreenWatch::hasWindow(const std::string& title) const {
  return find(title) != 0;
}

bool ScreenWatch::isPainted(const std::string& title) const {
  const unsigned window = find(title);
  if (window == 0) return false;
  auto* const server = connection_.get();
  constexpr std::uint32_t kAllPlanes = ~0U;
  const auto asked = xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, kHeadingTop, kHeadingWidth,
                                   kHeadingHeight, kAllPlanes);
  const auto image = own(xcb_get_image_reply(server, asked, nullptr));
  if (!image) return false; // it has just gone, or is smaller
  constexpr std::size_t kBytesOfPixel = 4;
  const std::span bytes(xcb_get_image_data(image.get()),
                        static_cast<std::size_t>(xcb_get_image_data_length(image.get())));
  return bytes.size() > kBytesOfPixel &&
         !std::equal(bytes.begin() + kBytesOfPixel, bytes.end(), bytes.begin());
}

} // namespace sonvel::testing
