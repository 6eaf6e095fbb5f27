#pragma once

#include <QByteArray>

namespace tidemark {

/// What the X server knows of a panel that embeds tray icons (System Tray Protocol Specification of
/// freedesktop.org). For the main thread of an application on X11.
namespace EmbeddingTray {

/// Whether there is one for the first screen.
bool isThere();

/// Whether an event, as a native event filter is given it, tells that one has begun.
bool isArrival(const QByteArray& eventType, const void* event);

}  // namespace EmbeddingTray

}  // namespace tidemark
