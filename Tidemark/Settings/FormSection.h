#pragma once

#include <QFrame>
#include <QWidget>

class QVBoxLayout;

namespace tidemark {

/// A group of a form: a title, and rows in a box with lines between them.
class FormSection : public QWidget {
public:
    explicit FormSection(const QString& title, QWidget* parent = nullptr);

    void addRow(QWidget* row);

    /// Before the row that stands at `index` now.
    void insertRow(int index, QWidget* row);

    /// Of `row`, which is the section's; it stays its child.
    void takeRow(QWidget* row);

private:
    QVBoxLayout* m_rows;
};

}  // namespace tidemark
