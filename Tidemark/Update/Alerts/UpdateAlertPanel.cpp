#include "UpdateAlertPanel.h"

#include "PlainText.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tidemark {

namespace {

constexpr QSize iconSize{48, 48};

/// Versions come from a server: they are no markup, and no lines of their own.
void setTexts(QMessageBox& box, const UpdateAlert& alert)
{
    box.setWindowTitle(QStringLiteral("Tidemark"));
    box.setTextFormat(Qt::PlainText);
    box.setText(oneLine(alert.message));
    box.setInformativeText(oneLine(alert.informativeText));
    // Qt has the format for the first text only.
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        label->setTextFormat(Qt::PlainText);
}

void addButtons(QMessageBox& box, const UpdateAlert& alert)
{
    QPushButton* last = nullptr;
    for (const std::string& text : alert.buttons) {
        // All of one role, since every desktop has an order of roles of its own.
        last = box.addButton(QString::fromStdString(text), QMessageBox::ActionRole);
        if (!box.defaultButton())
            box.setDefaultButton(last);
    }
    box.setEscapeButton(last);
}

}  // namespace

UpdateAlertPanel::UpdateAlertPanel() = default;

UpdateAlertPanel::~UpdateAlertPanel()
{
    // There may be no event loop any more.
    delete m_box.release();
}

void UpdateAlertPanel::DeleteLater::operator()(QMessageBox* box) const
{
    box->disconnect();
    box->hide();
    box->deleteLater();
}

void UpdateAlertPanel::show(const UpdateAlert& alert, Answered answered)
{
    m_answered = std::move(answered);
    m_box.reset(new QMessageBox);
    setTexts(*m_box, alert);
    addButtons(*m_box, alert);
    m_box->setIconPixmap(QApplication::windowIcon().pixmap(iconSize));
    m_box->setModal(false);
    QObject::connect(m_box.get(), &QMessageBox::finished, &m_front, [this] { boxHasClosed(); });
    m_front.observe(m_box.get());
}

void UpdateAlertPanel::boxHasClosed()
{
    const auto buttons = m_box->buttons();
    const auto button = buttons.indexOf(m_box->clickedButton());
    // Closed by something that is no button at all: the last one stands for it.
    const auto answer = button < 0 ? buttons.size() - 1 : button;
    m_box.reset();
    const Answered answered = std::exchange(m_answered, {});
    answered(static_cast<std::size_t>(answer));
}

void UpdateAlertPanel::bringForward()
{
    m_front.front();
}

void UpdateAlertPanel::withdraw()
{
    m_box.reset();
    m_answered = {};
}

}  // namespace tidemark
