#include "FolderGroup.h"

#include "FolderRuleRow.h"
#include "FolderText.h"
#include "WatchedFolderRow.h"

#include <QHBoxLayout>
#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tidemark {

namespace {

/// An arrow that is as flat when the rules are shown as when they are not; a button that stays down looks
/// pressed.
class Disclosure final : public QToolButton {
protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStyleOptionToolButton option;
        initStyleOption(&option);
        if (!isDown())
            option.state &= ~(QStyle::State_On | QStyle::State_Sunken);
        QStylePainter{this}.drawComplexControl(QStyle::CC_ToolButton, option);
    }
};

}  // namespace

FolderGroup::FolderGroup(AppModel& model, const WatchedFolderInfo& info)
    : m_model(model)
    , m_info(info)
    , m_disclosure(new Disclosure)
    , m_row(new WatchedFolderRow{model, info})
    , m_layout(new QVBoxLayout{this})
{
    m_disclosure->setAutoRaise(true);
    m_disclosure->setCheckable(true);
    m_disclosure->setFocusPolicy(Qt::StrongFocus);
    m_disclosure->setAccessibleName(
        QStringLiteral("Rules of ") + FolderText::name(info.folder.path));
    QObject::connect(
        m_disclosure, &QToolButton::toggled, this, [this](bool is) { setDisclosed(is); });

    auto* head = new QHBoxLayout;
    head->addWidget(m_disclosure);
    head->addWidget(m_row, 1);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addLayout(head);
    setDisclosed(false);
}

void FolderGroup::show(const WatchedFolderInfo& info)
{
    m_info = info;
    m_row->show(info);
    if (m_content)
        showContent();
}

bool FolderGroup::isDisclosed() const
{
    return m_disclosure->isChecked();
}

void FolderGroup::setDisclosed(bool isDisclosed)
{
    m_disclosure->setChecked(isDisclosed);
    m_disclosure->setArrowType(isDisclosed ? Qt::DownArrow
            : isRightToLeft()              ? Qt::LeftArrow
                                           : Qt::RightArrow);
    if (isDisclosed && !m_content)
        showContent();
    if (m_content)
        m_content->setVisible(isDisclosed);
}

void FolderGroup::showContent()
{
    if (!m_content || !hasRowsOfItsRules())
        makeContent();
    for (std::size_t index = 0; index < m_rules.size(); ++index)
        m_rules.at(index)->show(m_info.folder.rules.at(index));
    m_markdown->show({
        .symbol = QStringLiteral("doc.richtext"),
        .title = QStringLiteral("Sort Markdown files"),
        .lines = {QStringLiteral("Organize .md by front-matter")},
        .place = FolderText::name(path()),
        .isOn = m_info.folder.sortsMarkdown,
    });
}

bool FolderGroup::hasRowsOfItsRules() const
{
    return std::ranges::equal(m_rules, m_info.folder.rules,
        [](const FolderRuleRow* row, const Rule& rule) { return row->rule() == rule.id; });
}

void FolderGroup::makeContent()
{
    if (m_content) {
        m_content->hide();
        m_content->deleteLater();  // it may be one of its rows that asks
    }
    m_rules.clear();
    m_content = new QWidget;
    auto* rows = new QVBoxLayout{m_content};
    constexpr int indent = 28;
    rows->setContentsMargins(indent, 0, 0, 4);
    for (const Rule& rule : m_info.folder.rules) {
        m_rules.push_back(new FolderRuleRow{m_model, path(), rule});
        rows->addWidget(m_rules.back());
    }
    m_markdown = new ToggleRow;
    rows->addWidget(m_markdown);
    QObject::connect(&m_markdown->toggle(), &QCheckBox::toggled, this,
        [this](bool sorts) { m_model.setSortsMarkdown(path(), sorts); });
    m_layout->addWidget(m_content);
    m_content->setVisible(isDisclosed());
}

}  // namespace tidemark
