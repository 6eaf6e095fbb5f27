#pragma once

#include "BringToFront.h"
#include "UpdateAlerts.h"

#include <memory>

class QMessageBox;

namespace tidemark {

/// Shows alerts as message boxes of their own, in front of everything; the application goes on meanwhile.
/// For the main thread, which has a QApplication.
class UpdateAlertPanel final : public UpdateAlerts {
public:
    UpdateAlertPanel();
    ~UpdateAlertPanel() override;

    void show(const UpdateAlert& alert, Answered answered) override;
    void bringForward() override;
    void withdraw() override;

    /// The box that is up; null while there is none.
    QMessageBox* box() { return m_box.get(); }

private:
    /// Which may be in the middle of a signal of its own.
    struct DeleteLater {
        void operator()(QMessageBox* box) const;
    };

    void boxHasClosed();

    std::unique_ptr<QMessageBox, DeleteLater> m_box;
    Answered m_answered;
    BringToFront m_front{nullptr};
};

}  // namespace tidemark
