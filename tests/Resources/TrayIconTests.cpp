#include "GuiApplication.h"
#include "ScopedEnvironment.h"
#include "Symbols.h"
#include "TemporaryFolder.h"

#include <QDir>
#include <QFile>

namespace tidemark {

namespace {

const QString unpaused = QStringLiteral("io.tidemark.Tidemark-tray-symbolic");
const QString paused = QStringLiteral("io.tidemark.Tidemark-paused-symbolic");

/// An icon theme with the tray's icons below `data`, as an installation leaves it.
void installIconTheme(const QString& data)
{
    const QString icons = data + "/icons";
    const QString apps = icons + "/hicolor/symbolic/apps";
    ASSERT_TRUE(QDir{}.mkpath(apps));
    QFile index{icons + "/hicolor/index.theme"};
    ASSERT_TRUE(index.open(QFile::WriteOnly));
    index.write("[Icon Theme]\nName=hicolor\nDirectories=symbolic/apps\n"
                "[symbolic/apps]\nSize=16\nMinSize=8\nMaxSize=512\nType=Scalable\n");
    const QString symbols = QStringLiteral(":/tidemark/symbols/");
    ASSERT_TRUE(QFile::copy(symbols + "sparkles.svg", apps + '/' + unpaused + ".svg"));
    ASSERT_TRUE(QFile::copy(symbols + "pause.circle.svg", apps + '/' + paused + ".svg"));
    QIcon::setThemeSearchPaths({icons});
}

}  // namespace

/// On a machine on which it is not installed yet.
class TrayIcon : public DrawingTest {
protected:
    QString data() const { return QString::fromStdString(m_folder.path()); }

private:
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_userData{"XDG_DATA_HOME", m_folder.path()};
    const ScopedEnvironment m_systemData{"XDG_DATA_DIRS", m_folder.path()};
};

TEST_F(TrayIcon, ShowsSparklesOrWhilePausedThePauseSign)
{
    EXPECT_EQ(difference(shown(trayIcon(false), 22), shown(symbolIcon("sparkles"), 22)), 0);
    EXPECT_EQ(difference(shown(trayIcon(true), 22), shown(symbolIcon("pause.circle"), 22)), 0);
}

TEST_F(TrayIcon, StandsOutFromLightAndDarkPanelsWhateverTheApplicationsPalette)
{
    for (const QColor window : {QColor{Qt::white}, QColor{Qt::black}}) {
        setColours(window == QColor{Qt::white} ? Qt::black : Qt::white, window);
        for (const bool isPaused : {false, true}) {
            const QColor ink = inkOf(shown(trayIcon(isPaused), 32));
            EXPECT_GT(contrast(ink, Qt::white), 3);
            EXPECT_GT(contrast(ink, Qt::black), 3);
        }
    }
}

TEST_F(TrayIcon, OffersTheSizesOfPanels)
{
    EXPECT_TRUE(trayIcon(false).availableSizes().contains(QSize(16, 16)));
    EXPECT_TRUE(trayIcon(false).availableSizes().contains(QSize(22, 22)));
}

TEST_F(TrayIcon, HasNoNameWhereTheThemeHasNoSuchIcon)
{
    // A panel would look for it in vain, and some would then show nothing.
    EXPECT_EQ(trayIcon(false).name(), QString{});
    EXPECT_EQ(trayIcon(true).name(), QString{});
}

TEST_F(TrayIcon, HasItsNameInTheThemeWhereItIsInstalled)
{
    ASSERT_NO_FATAL_FAILURE(installIconTheme(data()));

    EXPECT_EQ(trayIcon(false).name(), unpaused);
    EXPECT_EQ(trayIcon(true).name(), paused);
}

TEST_F(TrayIcon, OfTheThemeIsOfTheSameGreyForPanelsThatDoNotRecolour)
{
    ASSERT_NO_FATAL_FAILURE(installIconTheme(data()));

    EXPECT_EQ(inkOf(shown(QIcon::fromTheme(unpaused), 32)), inkOf(shown(trayIcon(false), 32)));
    EXPECT_EQ(inkOf(shown(QIcon::fromTheme(paused), 32)), inkOf(shown(trayIcon(true), 32)));
}

TEST_F(TrayIcon, IsMadeOfFillsOnly)
{
    // GTK's panels recolour a symbolic icon by filling every shape: an outline would become a blot.
    for (const char* name : {"sparkles", "pause.circle"}) {
        QFile file{QStringLiteral(":/tidemark/symbols/") + name + ".svg"};
        ASSERT_TRUE(file.open(QFile::ReadOnly)) << name;
        const QByteArray text = file.readAll();
        EXPECT_FALSE(text.contains("stroke")) << name;
        EXPECT_TRUE(text.contains("ColorScheme-Text")) << name;
    }
}

TEST_F(TrayIcon, ApplicationIconIsThereWithoutAnInstallation)
{
    EXPECT_GT(coverage(shown(applicationIcon(), 64)), 0.5);
}

}  // namespace tidemark
