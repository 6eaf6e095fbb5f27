// What tidemark-bench measures the application beside: an application with a tray icon, an empty menu,
// and nothing else. It is built twice, with Qt's libraries and with those of the application.

#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    constexpr int size = 22;
    QPixmap picture(size, size);
    picture.fill(Qt::gray);
    QMenu menu;
    QSystemTrayIcon icon{QIcon{picture}};
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}
