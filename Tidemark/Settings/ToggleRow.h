#pragma once

#include <QCheckBox>
#include <QStringList>
#include <QWidget>

#include <vector>

class QLabel;
class QVBoxLayout;

namespace tidemark {

class ElidedLabel;
class SymbolLabel;

/// A row with a symbol, a title, lines below it, and a switch at its end.
class ToggleRow : public QWidget {
public:
    explicit ToggleRow(QWidget* parent = nullptr);

    struct Content {
        QString symbol;
        QString title;
        QStringList lines;
        QString place;  ///< Tells it from a row of the same title elsewhere, for screen readers.
        bool isOn = false;
    };
    void show(const Content& content);

    /// Its `toggled` is the user's doing, by whatever means: a screen reader does not click.
    QCheckBox& toggle() { return *m_toggle; }

private:
    void showLines(const QStringList& lines);

    SymbolLabel* m_symbol;
    QVBoxLayout* m_texts;
    ElidedLabel* m_title;
    std::vector<QLabel*> m_lines;
    QCheckBox* m_toggle;
};

}  // namespace tidemark
