#pragma once

#include <QPushButton>

namespace tidemark {

/// A link in the form of a button, for the keyboard and for screen readers: opens a page in the user's browser.
class LinkButton : public QPushButton {
public:
    LinkButton(const QString& text, QString url, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_url;
};

}  // namespace tidemark
