#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

namespace tidemark {

/// Keeps one window above those of other applications whenever it becomes the active one, which an
/// application without a main window does not get by itself.
///
/// Where the desktop lets nobody take the focus, the window demands attention instead. On Wayland an
/// activation token in $XDG_ACTIVATION_TOKEN is spent; without one, where no request of Qt's has any
/// effect, the window is shown anew, since most desktops give the focus to new windows.
class BringToFront : public QObject {
public:
    explicit BringToFront(QObject* parent);

    /// Brings `window` to the front, now and each time it becomes active. Null is ignored. The window may be
    /// destroyed before this.
    void observe(QWidget* window);

    /// Shows the window, if it still exists, above all others and gives it the focus.
    void front();

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    bool isOutOfReach() const;
    void demandAttention();

    QPointer<QWidget> m_window;
    QTimer m_patience;
};

}  // namespace tidemark
