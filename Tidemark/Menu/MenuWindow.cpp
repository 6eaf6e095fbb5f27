#include "MenuWindow.h"

#include "LayoutOrder.h"
#include "MenuContent.h"
#include "SecondaryColour.h"

#include <QAction>
#include <QEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QStyleOption>
#include <QStylePainter>
#include <QVBoxLayout>

namespace tidemark {

namespace {

/// The text of an action of which "&&" is the only mark.
QString plainText(const QAction& action)
{
    return action.text().replace(QStringLiteral("&&"), QStringLiteral("&"));
}

/// How a style is told to draw an item as in a menu.
QStyleOptionMenuItem optionOf(const QWidget& widget, const QString& text)
{
    QStyleOptionMenuItem option;
    option.initFrom(&widget);
    option.state &= ~QStyle::State_MouseOver;
    option.menuItemType = QStyleOptionMenuItem::Normal;
    option.font = widget.font();
    option.menuRect = widget.rect();
    option.text = text;
    return option;
}

/// An item that looks as in a menu and is a button to the keyboard and to screen readers.
class Row final : public QPushButton {
public:
    explicit Row(QAction& action)
        : m_action(action)
    {
        setAutoDefault(false);
        setMouseTracking(true);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        follow();
        QObject::connect(&action, &QAction::changed, this, [this] { follow(); });
        QObject::connect(this, &QPushButton::clicked, &action, &QAction::trigger);
    }

    QSize sizeHint() const override
    {
        const QStyleOptionMenuItem option = menuOption();
        const int width = fontMetrics().horizontalAdvance(plainText(m_action) + shortcut());
        return style()->sizeFromContents(QStyle::CT_MenuItem, &option,
            QSize{width + 3 * fontMetrics().averageCharWidth(), fontMetrics().height()}, this);
    }

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStylePainter{this}.drawControl(QStyle::CE_MenuItem, menuOption());
    }

private:
    QString shortcut() const { return m_action.shortcut().toString(QKeySequence::NativeText); }

    void follow()
    {
        setText(m_action.text());
        setAccessibleName(plainText(m_action));
        setEnabled(m_action.isEnabled());
        showToolTip();
        updateGeometry();
    }

    void showToolTip()
    {
        // Without one of its own an action gives its text.
        const QString tip =
            m_action.toolTip() == m_action.iconText() ? QString{} : m_action.toolTip();
        setToolTip(tip);
        setAccessibleDescription(tip);
    }

    QStyleOptionMenuItem menuOption() const
    {
        QStyleOptionMenuItem option = optionOf(*this, text());
        if (isEnabled() && (underMouse() || hasFocus()))
            option.state |= QStyle::State_Selected;
        if (isDown())
            option.state |= QStyle::State_Sunken;
        option.reservedShortcutWidth = fontMetrics().horizontalAdvance(shortcut());
        if (!shortcut().isEmpty())
            option.text += QChar{'\t'} + shortcut();
        return option;
    }

    QAction& m_action;
};

/// A line of text where an item would have its own.
class Line final : public QLabel {
public:
    explicit Line(QAction& action)
    {
        setTextFormat(Qt::PlainText);
        useSecondaryColour(*this);
        const auto follow = [this, &action] { setText(plainText(action)); };
        follow();
        QObject::connect(&action, &QAction::changed, this, follow);
    }

    QSize sizeHint() const override
    {
        const QStyleOptionMenuItem option = optionOf(*this, text());
        return style()->sizeFromContents(
            QStyle::CT_MenuItem, &option, fontMetrics().size(Qt::TextSingleLine, text()), this);
    }

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStyleOptionMenuItem option = optionOf(*this, menuText(text(), MenuHost::widgets));
        const QColor colour = palette().color(QPalette::WindowText);
        for (const QPalette::ColorRole role : {QPalette::Text, QPalette::ButtonText})
            option.palette.setColor(role, colour);
        QStylePainter{this}.drawControl(QStyle::CE_MenuItem, option);
    }
};

QWidget* makeSeparator()
{
    auto* line = new QFrame;
    line->setFrameStyle(QFrame::HLine | QFrame::Sunken);
    return line;
}

QWidget* makeRow(QAction& action)
{
    if (action.isSeparator())
        return makeSeparator();
    if (MenuContent::isLine(action))
        return new Line{action};
    return new Row{action};
}

}  // namespace

MenuWindow::MenuWindow(MenuContent& content)
    : m_menu(content.menu())
    , m_layout(new QVBoxLayout{this})
{
    setWindowTitle(QStringLiteral("Tidemark"));
    m_layout->setContentsMargins(6, 6, 6, 6);
    m_layout->setSpacing(2);
    m_layout->setSizeConstraint(QLayout::SetFixedSize);
    addActions({&content.settingsAction(), &content.quitAction()});
    m_menu.installEventFilter(this);
    rebuild();
}

bool MenuWindow::eventFilter(QObject* object, QEvent* event)
{
    const bool isAboutActions =
        event->type() == QEvent::ActionAdded || event->type() == QEvent::ActionRemoved;
    // The menu itself has to see it first.
    if (object == &m_menu && isAboutActions)
        QMetaObject::invokeMethod(
            this, [this] { rebuild(); }, Qt::QueuedConnection);
    return QDialog::eventFilter(object, event);
}

void MenuWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down)
        focusNextPrevChild(true);
    else if (event->key() == Qt::Key_Up)
        focusNextPrevChild(false);
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        pressFocused();
    else
        QDialog::keyPressEvent(event);
}

/// As in a menu; to a button, Return means nothing on many desktops.
void MenuWindow::pressFocused()
{
    if (auto* row = dynamic_cast<Row*>(focusWidget()))
        row->click();
}

/// Rows of actions that stay are kept, with the focus.
void MenuWindow::rebuild()
{
    std::map<QAction*, QWidget*> before = std::exchange(m_rows, {});
    for (QAction* action : m_menu.actions()) {
        QWidget*& row = m_rows[action];
        const auto kept = before.extract(action);
        row = kept ? kept.mapped() : makeRow(*action);
        m_layout->removeWidget(row);
        m_layout->addWidget(row);
    }
    for (const auto& [action, row] : before)
        row->deleteLater();
    orderAsLaidOut(*this);
}

}  // namespace tidemark
