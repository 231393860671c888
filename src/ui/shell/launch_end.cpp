#include "ui/shell/launch_end.h"

#include <QGuiApplication>
#include <QWindow>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace sonvel::ui {
namespace {

constexpr qsizetype kMessageBytes = 20; ///< in one X11 client message
constexpr qsizetype kLongestId = 1024;  ///< far below what would break the connection to the X server

struct Free {
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): as XCB says
  void operator()(void* reply) const { std::free(reply); }
};

xcb_atom_t atom(xcb_connection_t& server, const QByteArray& name) {
  const auto question =
      xcb_intern_atom(&server, 0, static_cast<std::uint16_t>(name.size()), name.constData());
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
      xcb_intern_atom_reply(&server, question, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

QByteArray escaped(const QByteArray& value) {
  QByteArray text;
  for (const char letter : value) {
    if (letter == ' ' || letter == '"' || letter == '\\') text += '\\';
    text += letter;
  }
  return text;
}

/// Sends a message of the startup notification protocol to all who listen, in parts.
void broadcast(xcb_connection_t& server, xcb_window_t sender, const QByteArray& message) {
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(&server)).data->root;
  xcb_client_message_event_t event{.response_type = XCB_CLIENT_MESSAGE,
                                   .format = 8,
                                   .sequence = 0,
                                   .window = sender,
                                   .type = atom(server, "_NET_STARTUP_INFO_BEGIN"),
                                   .data = {}};
  const qsizetype size = message.size() + 1; // with the null at its end
  for (qsizetype sent = 0; sent < size; sent += kMessageBytes) {
    event.data = {};
    const auto* const part = message.constData() + sent;
    std::copy(part, part + std::min(kMessageBytes, size - sent), event.data.data8);
    xcb_send_event(&server, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char*>(&event));
    event.type = atom(server, "_NET_STARTUP_INFO");
  }
}

} // namespace

void endLaunch(QWindow& window) {
  const QByteArray launch = qgetenv("DESKTOP_STARTUP_ID");
  if (launch.isEmpty()) return;
  qunsetenv("DESKTOP_STARTUP_ID");
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || launch.size() > kLongestId) return;
  xcb_connection_t& server = *x11->connection();
  const auto id = static_cast<xcb_window_t>(window.winId());
  xcb_change_property(&server, XCB_PROP_MODE_REPLACE, id, atom(server, "_NET_STARTUP_ID"),
                      atom(server, "UTF8_STRING"), 8, static_cast<std::uint32_t>(launch.size()),
                      launch.constData());
  broadcast(server, id, "remove: ID=" + escaped(launch));
  xcb_flush(&server);
}

} // namespace sonvel::ui
