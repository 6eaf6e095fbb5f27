#include "WatchedFolderRow.h"

#include "ElidedLabel.h"
#include "FolderText.h"
#include "PlainText.h"
#include "SecondaryColour.h"
#include "SymbolLabel.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QToolButton>
#include <QVBoxLayout>

namespace tidemark {

namespace {

/// With the first click of a double click a folder goes, and the next one takes its place under the pointer.
class RemoveButton final : public QToolButton {
protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override { event->accept(); }
};

}  // namespace

WatchedFolderRow::WatchedFolderRow(AppModel& model, const WatchedFolderInfo& info)
    : m_model(model)
    , m_path(info.folder.path)
    , m_access(new SymbolLabel{20, SymbolTone::primary})
{
    auto* symbol = new SymbolLabel{20, SymbolTone::secondary};
    symbol->setSymbol(FolderText::symbol(m_path));
    auto* name = new ElidedLabel{Qt::ElideRight};
    name->setText(FolderText::name(m_path));
    auto* path = new ElidedLabel{Qt::ElideMiddle};
    path->setText(FolderText::displayPath(m_path));
    useSecondaryColour(*path);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(name);
    texts->addWidget(path);

    auto* remove = new RemoveButton;
    remove->setAutoRaise(true);
    remove->setIcon(symbolIcon(QStringLiteral("minus.circle.fill"), SymbolTone::secondary));
    remove->setToolTip(QStringLiteral("Stop watching this folder"));
    remove->setAccessibleName(QStringLiteral("Stop watching ") + FolderText::name(m_path));
    remove->setFocusPolicy(Qt::StrongFocus);
    QObject::connect(remove, &QToolButton::clicked, this, [this] { m_model.removeFolder(m_path); });

    auto* layout = new QHBoxLayout{this};
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(symbol);
    layout->addLayout(texts, 1);
    layout->addWidget(m_access);
    layout->addWidget(remove);
    show(info);
}

void WatchedFolderRow::show(const WatchedFolderInfo& info)
{
    m_access->setSymbol(info.isGranted ? QStringLiteral("checkmark.circle.fill")
                                       : QStringLiteral("exclamationmark.triangle.fill"));
    m_access->setMeaning(info.isGranted
            ? QStringLiteral("Access granted")
            : QStringLiteral("Needs access — Tidemark asks when it first sweeps this folder"));
}

}  // namespace tidemark
