#include "ToggleRow.h"

#include "ElidedLabel.h"
#include "SecondaryColour.h"
#include "SymbolLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tidemark {

ToggleRow::ToggleRow(QWidget* parent)
    : QWidget(parent)
    , m_symbol(new SymbolLabel{22, SymbolTone::secondary})
    , m_texts(new QVBoxLayout)
    , m_title(new ElidedLabel{Qt::ElideRight})
    , m_toggle(new QCheckBox)
{
    m_texts->setSpacing(0);
    m_texts->addWidget(m_title);

    auto* layout = new QHBoxLayout{this};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_symbol);
    layout->addLayout(m_texts, 1);
    layout->addWidget(m_toggle);
}

void ToggleRow::show(const Content& content)
{
    m_symbol->setSymbol(content.symbol);
    m_title->setText(content.title);
    showLines(content.lines);
    {
        const QSignalBlocker quiet{m_toggle};
        m_toggle->setChecked(content.isOn);
    }
    m_toggle->setAccessibleName(content.title + QStringLiteral(", ") + content.place);
    m_toggle->setAccessibleDescription(content.lines.join(QStringLiteral(". ")));
}

void ToggleRow::showLines(const QStringList& lines)
{
    const auto count = static_cast<std::size_t>(lines.size());
    while (m_lines.size() > count) {
        delete m_lines.back();
        m_lines.pop_back();
    }
    while (m_lines.size() < count) {
        auto* line = new QLabel;
        line->setTextFormat(Qt::PlainText);
        line->setWordWrap(true);
        useSecondaryColour(*line);
        m_texts->addWidget(line);
        m_lines.push_back(line);
    }
    for (std::size_t index = 0; index < count; ++index)
        m_lines.at(index)->setText(lines.at(static_cast<qsizetype>(index)));
}

}  // namespace tidemark
