#include "EmbeddingTray.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace tidemark {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply)
{
    return std::unique_ptr<Reply, Free>{reply};
}

xcb_connection_t* connection()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* x, std::string_view name)
{
    const auto request =
        xcb_intern_atom(x, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(x, request, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// The selection that belongs to whoever embeds the icons of the first screen.
xcb_atom_t traySelection(xcb_connection_t* x)
{
    return atom(x, "_NET_SYSTEM_TRAY_S0");
}

}  // namespace

bool EmbeddingTray::isThere()
{
    xcb_connection_t* x = connection();
    if (!x)
        return false;
    const auto request = xcb_get_selection_owner(x, traySelection(x));
    const auto reply = owned(xcb_get_selection_owner_reply(x, request, nullptr));
    return reply && reply->owner != XCB_NONE;
}

bool EmbeddingTray::isArrival(const QByteArray& eventType, const void* event)
{
    constexpr std::uint8_t sentByAClient = 0x80;
    const auto* message = static_cast<const xcb_client_message_event_t*>(event);
    if (eventType != "xcb_generic_event_t"
        || (message->response_type & ~sentByAClient) != XCB_CLIENT_MESSAGE)
        return false;
    xcb_connection_t* x = connection();
    return x && message->type == atom(x, "MANAGER") && message->data.data32[1] == traySelection(x);
}

}  // namespace tidemark
