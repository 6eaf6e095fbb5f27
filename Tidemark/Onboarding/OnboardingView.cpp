#include "OnboardingView.h"

#include "SecondaryColour.h"
#include "SymbolLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace tidemark {

namespace {

constexpr int margin = 28;

QLabel* makeText(const QString& text)
{
    auto* label = new QLabel{text};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QLabel* makeSecondaryText(const QString& text)
{
    QLabel* label = makeText(text);
    useSecondaryColour(*label);
    return label;
}

QLabel* makeTitle(const QString& text)
{
    QLabel* label = makeText(text);
    constexpr double larger = 1.8;
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * larger);
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLayout* besideSymbol(const QString& symbol, QLabel* text)
{
    auto* icon = new SymbolLabel{22, SymbolTone::secondary};
    icon->setSymbol(symbol);
    auto* line = new QHBoxLayout;
    constexpr int gap = 10;
    line->setSpacing(gap);
    line->addWidget(icon, 0, Qt::AlignTop);
    line->addWidget(text, 1);
    return line;
}

}  // namespace

OnboardingView::OnboardingView(AppModel& model, std::function<void()> dismiss)
    : m_start(new QPushButton{QStringLiteral("Start sweeping")})
{
    auto* head = new QVBoxLayout;
    head->setSpacing(4);
    head->addWidget(makeTitle(QStringLiteral("Welcome to Tidemark")));
    head->addWidget(
        makeSecondaryText(QStringLiteral("Your Desktop and Downloads, under control.")));

    auto* rules = new QVBoxLayout;
    rules->setSpacing(10);
    rules->addLayout(besideSymbol(QStringLiteral("camera"),
        makeText(QStringLiteral("Screenshots get named and filed automatically."))));
    rules->addLayout(besideSymbol(QStringLiteral("shippingbox"),
        makeText(QStringLiteral("Old installers are cleaned up once you're done with them."))));
    rules->addLayout(besideSymbol(QStringLiteral("archivebox"),
        makeText(QStringLiteral("Downloads older than 30 days are tucked into a dated archive."))));

    auto* add = new QPushButton{symbolIcon(QStringLiteral("plus")), QStringLiteral("Add folder…")};
    add->setAutoDefault(false);
    QObject::connect(add, &QPushButton::clicked, this, [&model] { model.addFolder(); });
    m_start->setDefault(true);
    QObject::connect(m_start, &QPushButton::clicked, this, [&model, dismiss = std::move(dismiss)] {
        model.finishOnboarding();
        dismiss();
    });
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addStretch();
    buttons->addWidget(m_start);

    auto* layout = new QVBoxLayout{this};
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(18);
    layout->addLayout(head);
    layout->addLayout(rules);
    layout->addWidget(makeSecondaryText(
        QStringLiteral("All three are on. Nothing is ever deleted — everything moves, and “Undo "
                       "last sweep” puts it right back.")));
    layout->addLayout(besideSymbol(QStringLiteral("doc.richtext"),
        makeSecondaryText(QStringLiteral(
            "Turn on Markdown sorting for a folder and notes file themselves by their "
            "front-matter."))));
    layout->addLayout(buttons);
    startOnReturn();
}

void OnboardingView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_start->setFocus();
}

/// Wherever the focus is: on some desktops Return presses the button that has it, default or not.
void OnboardingView::startOnReturn()
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut{key, this};
        QObject::connect(shortcut, &QShortcut::activated, m_start, [this] { m_start->click(); });
    }
}

}  // namespace tidemark
