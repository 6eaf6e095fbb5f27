#pragma once

#include <QDialog>

class QScrollBar;

namespace tidemark {

/// A window for a form: as high as that, up to what the screen has room for; then it scrolls. Titled and
/// closable only, and nobody resizes it. Wider than it was meant to be only where large text leaves no
/// choice.
class FormWindow : public QDialog {
public:
    /// `width` is in device-independent pixels. `form` belongs to the window then.
    FormWindow(const QString& title, QWidget* form, int width);

    void centre();

    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void followForm();
    void fit();
    void keepOnScreen();

    QWidget* m_form;
    QScrollBar* m_scrollBar = nullptr;
    const int m_width;
};

}  // namespace tidemark
