#include "SettingsWindowController.h"

#include "LayoutOrder.h"
#include "SettingsView.h"

#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace tidemark {

namespace {

constexpr int windowWidth = 480;

/// As high as its form, up to what the screen has room for; then it scrolls.
class SettingsWindow final : public QDialog {
public:
    explicit SettingsWindow(AppModel& model)
        : QDialog(nullptr,
            Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                | Qt::WindowCloseButtonHint)
        , m_view(new SettingsView{model})
    {
        setWindowTitle(QStringLiteral("Tidemark Settings"));
        auto* scroller = new QScrollArea;
        scroller->setFrameShape(QFrame::NoFrame);
        scroller->setWidgetResizable(true);
        scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroller->setFocusPolicy(Qt::NoFocus);
        scroller->setWidget(m_view);
        auto* layout = new QVBoxLayout{this};
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(scroller);
        m_view->installEventFilter(this);
        followForm();
    }

    void centre()
    {
        QRect frame = frameGeometry();
        frame.moveCenter(screen()->availableGeometry().center());
        move(frame.topLeft());
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (object == m_view && event->type() == QEvent::LayoutRequest)
            QMetaObject::invokeMethod(
                this, [this] { followForm(); }, Qt::QueuedConnection);
        return QDialog::eventFilter(object, event);
    }

protected:
    void showEvent(QShowEvent* event) override
    {
        QDialog::showEvent(event);
        fitHeight();
    }

private:
    void followForm()
    {
        fitHeight();
        orderAsLaidOut(*m_view);
    }

    void fitHeight()
    {
        constexpr int besideWindow = 64;  // panels that tell nobody, and the frame
        const int most = screen()->availableGeometry().height() - besideWindow;
        const int wanted = m_view->layout()->hasHeightForWidth()
            ? m_view->layout()->totalHeightForWidth(windowWidth)
            : m_view->sizeHint().height();
        setFixedSize(windowWidth, std::min(wanted, most));
        if (isVisible())
            keepOnScreen();
    }

    /// It grows downwards. Wayland lets no window move itself.
    void keepOnScreen()
    {
        const QRect frame = frameGeometry();
        const QRect available = screen()->availableGeometry();
        const int below = frame.bottom() - available.bottom();
        if (below > 0)
            move(frame.x(), std::max(available.top(), frame.y() - below));
    }

    SettingsView* m_view;
};

}  // namespace

SettingsWindowController::SettingsWindowController(AppModel& model)
    : m_model(model)
{
}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::open(const QList<QAction*>& actions)
{
    m_model.refresh();
    if (!m_window) {
        auto window = std::make_unique<SettingsWindow>(m_model);
        window->addActions(actions);
        window->centre();
        m_window = std::move(window);
    }
    m_front.observe(m_window.get());
}

}  // namespace tidemark
