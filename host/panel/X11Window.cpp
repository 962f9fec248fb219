#include "host/panel/X11Window.h"

#include <QGuiApplication>
#include <QRect>
#include <QRegion>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace Corvella::x11 {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
/// What the server answered; null when the window is gone by now.
template <typename Content>
using Reply = std::unique_ptr<Content, Free>;

/// Null elsewhere than on X11.
xcb_connection_t* connection() {
  const auto* const application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return application != nullptr ? application->connection() : nullptr;
}

xcb_atom_t atom(std::string_view name) {
  auto* const server = connection();
  const auto asked =
      xcb_intern_atom(server, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(server, asked, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// The numbers that a property consists of; none when the window does not have it.
std::vector<std::uint32_t> values(xcb_window_t window, std::string_view property) {
  constexpr std::uint32_t kMost = 4096;
  auto* const server = connection();
  const auto asked =
      xcb_get_property(server, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, kMost);
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(server, asked, nullptr));
  if (!reply || reply->format != 32) return {};
  std::vector<std::uint32_t> numbers(reply->value_len);
  if (numbers.empty()) return numbers;
  std::memcpy(numbers.data(), xcb_get_property_value(reply.get()), numbers.size() * 4);
  return numbers;
}

xcb_window_t rootOf(xcb_window_t window) {
  auto* const server = connection();
  const auto asked = xcb_get_geometry(server, window);
  const Reply<xcb_get_geometry_reply_t> reply(xcb_get_geometry_reply(server, asked, nullptr));
  return reply ? reply->root : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

/// In pixels of the screen; empty when the window is gone.
QRect areaOf(xcb_window_t window) {
  auto* const server = connection();
  const auto sizeAsked = xcb_get_geometry(server, window);
  const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(server, sizeAsked, nullptr));
  if (!size) return {};
  // A window manager puts windows into frames, which their own position is relative to.
  const auto placeAsked = xcb_translate_coordinates(server, window, size->root, 0, 0);
  const Reply<xcb_translate_coordinates_reply_t> place(
      xcb_translate_coordinates_reply(server, placeAsked, nullptr));
  if (!place) return {};
  return {place->dst_x, place->dst_y, size->width, size->height};
}

bool isOnCurrentDesktop(xcb_window_t window, xcb_window_t root) {
  constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;
  const auto current = values(root, "_NET_CURRENT_DESKTOP");
  const auto own = values(window, "_NET_WM_DESKTOP");
  return current.empty() || own.empty() || own[0] == current[0] || own[0] == kAllDesktops;
}

/// Whether the window manager shows it, as far as no other window covers it. Some managers keep
/// windows mapped that are minimized or on another desktop, so that they can draw previews.
bool isShown(xcb_window_t window, xcb_window_t root) {
  auto* const server = connection();
  const auto asked = xcb_get_window_attributes(server, window);
  const Reply<xcb_get_window_attributes_reply_t> reply(
      xcb_get_window_attributes_reply(server, asked, nullptr));
  if (!reply || reply->map_state != XCB_MAP_STATE_VIEWABLE) return false;
  const auto states = values(window, "_NET_WM_STATE");
  return isOnCurrentDesktop(window, root) &&
         std::ranges::count(states, atom("_NET_WM_STATE_HIDDEN")) == 0;
}

std::int64_t pixelsIn(const QRegion& region) {
  std::int64_t pixels = 0;
  for (const auto& part : region) pixels += std::int64_t{part.width()} * part.height();
  return pixels;
}

/// Asks the window manager for something that concerns the window.
void ask(xcb_window_t window, std::string_view message, std::array<std::uint32_t, 5> data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom(message);
  std::ranges::copy(data, event.data.data32);
  std::array<char, sizeof event> bytes{};
  std::memcpy(bytes.data(), &event, sizeof event);
  xcb_send_event(connection(), 0, rootOf(window),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 bytes.data());
  xcb_flush(connection());
}

}  // namespace

bool isUsed() {
  return connection() != nullptr;
}

bool isInSight(WId id) {
  if (!isUsed()) return false;
  const auto window = static_cast<xcb_window_t>(id);
  const auto root = rootOf(window);
  if (!isShown(window, root)) return false;
  // From the lowest to the highest.
  const auto stack = values(root, "_NET_CLIENT_LIST_STACKING");
  const QRegion whole(areaOf(window));
  auto seen = whole;
  auto above = std::ranges::find(stack, window);
  while (above != stack.end() && ++above != stack.end()) {
    if (isShown(*above, root)) seen -= areaOf(*above);
  }
  return pixelsIn(seen) * 2 >= pixelsIn(whole);
}

void bringToCurrentDesktop(WId id) {
  if (!isUsed()) return;
  const auto window = static_cast<xcb_window_t>(id);
  const auto root = rootOf(window);
  constexpr std::uint32_t kFromApplication = 1;
  if (isOnCurrentDesktop(window, root)) return;  // Or on all of them, where the user has put it.
  ask(window, "_NET_WM_DESKTOP", {values(root, "_NET_CURRENT_DESKTOP")[0], kFromApplication});
}

void keepOutOfTaskbar(WId id) {
  if (!isUsed()) return;
  const std::array states{atom("_NET_WM_STATE_SKIP_TASKBAR"), atom("_NET_WM_STATE_SKIP_PAGER")};
  // Qt adds its own states to these when it shows the window.
  xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(id),
                      atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

}  // namespace Corvella::x11
