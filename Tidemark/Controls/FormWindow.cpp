#include "FormWindow.h"

#include "LayoutOrder.h"

#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace tidemark {

FormWindow::FormWindow(const QString& title, QWidget* form, int width)
    : QDialog(nullptr,
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
            | Qt::WindowCloseButtonHint)
    , m_form(form)
    , m_width(width)
{
    setWindowTitle(title);
    auto* scroller = new QScrollArea;
    m_scrollBar = scroller->verticalScrollBar();
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller->setFocusPolicy(Qt::NoFocus);
    scroller->setWidget(m_form);
    auto* layout = new QVBoxLayout{this};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroller);
    m_form->installEventFilter(this);
    followForm();
}

void FormWindow::centre()
{
    QRect frame = frameGeometry();
    frame.moveCenter(screen()->availableGeometry().center());
    move(frame.topLeft());
}

bool FormWindow::eventFilter(QObject* object, QEvent* event)
{
    if (object == m_form && event->type() == QEvent::LayoutRequest)
        QMetaObject::invokeMethod(
            this, [this] { followForm(); }, Qt::QueuedConnection);
    return QDialog::eventFilter(object, event);
}

void FormWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // Which screen it is on is known only now, and may change.
    QObject::connect(
        windowHandle(), &QWindow::screenChanged, this, &FormWindow::fit, Qt::UniqueConnection);
    fit();
}

void FormWindow::followForm()
{
    fit();
    orderAsLaidOut(*m_form);
}

void FormWindow::fit()
{
    constexpr int besideWindow = 64;  // panels that tell nobody, and the frame
    const int most = screen()->availableGeometry().height() - besideWindow;
    const int wanted = m_form->layout()->hasHeightForWidth()
        ? m_form->layout()->totalHeightForWidth(m_width)
        : m_form->sizeHint().height();
    const int beside = wanted > most ? m_scrollBar->sizeHint().width() : 0;
    const int least = m_form->minimumSizeHint().width() + beside;
    setFixedSize(std::max(m_width, least), std::min(wanted, most));
    if (isVisible())
        keepOnScreen();
}

/// It grows downwards. Wayland lets no window move itself.
void FormWindow::keepOnScreen()
{
    const QRect frame = frameGeometry();
    const QRect available = screen()->availableGeometry();
    const int below = frame.bottom() - available.bottom();
    if (below > 0)
        move(frame.x(), std::max(available.top(), frame.y() - below));
}

}  // namespace tidemark
