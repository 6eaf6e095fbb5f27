#include <QApplication>

#include <gmock/gmock.h>

/// No display is needed, and no session bus is touched.
int main(int argc, char* argv[])
{
    testing::InitGoogleMock(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null");
    qunsetenv("QT_SCALE_FACTOR");
    const QApplication application{argc, argv};
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
