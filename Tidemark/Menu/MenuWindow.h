#pragma once

#include <QDialog>

#include <map>

class QAction;
class QMenu;
class QVBoxLayout;

namespace tidemark {

class MenuContent;

/// A menu that stands in a small window, for desktops on which there is no tray, or where a menu of the
/// application's own cannot be placed under the pointer.
///
/// It follows the menu, which outlives it.
class MenuWindow : public QDialog {
public:
    explicit MenuWindow(MenuContent& content);

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void rebuild();
    void pressFocused();

    QMenu& m_menu;
    QVBoxLayout* m_layout;
    std::map<QAction*, QWidget*> m_rows;
};

}  // namespace tidemark
