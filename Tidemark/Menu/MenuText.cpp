#include "MenuText.h"

#include "PlainText.h"

namespace tidemark {

namespace {

/// Qt turns the first "&" that is not at the end into "_" and sends all others as they are. For the panel
/// "_" marks a mnemonic, and "__" is an underscore (com.canonical.dbusmenu). But GTK takes a text with a
/// mark in it apart twice: then every underscore that is left is one more mark, and is not seen. So there
/// is either a mark or underscores.
QString panelText(QString text)
{
    const qsizetype ampersand = text.indexOf(QChar{'&'});
    const qsizetype underscore = text.indexOf(QChar{'_'});
    if (ampersand < 0 || (underscore >= 0 && underscore < ampersand)) {
        text.replace(QChar{'_'}, QStringLiteral("__"));
        if (ampersand >= 0)
            text[underscore] = QChar{'&'};
        return text;
    }
    // The mark cannot be avoided; so it marks another ampersand, and what looks like an underscore is none.
    constexpr char16_t lowMacron = 0x02CD;
    text.replace(QChar{'_'}, QChar{lowMacron});
    if (ampersand + 1 < text.size())
        text.insert(ampersand, QChar{'&'});
    return text;
}

}  // namespace

QString menuText(const QString& text, MenuHost host)
{
    if (host == MenuHost::statusNotifier)
        return panelText(text);
    QString result = text;
    return result.replace(QChar{'&'}, QStringLiteral("&&"));
}

QString menuLine(std::string_view text)
{
    constexpr qsizetype widest = 80;
    return shortened(oneLine(text), widest);
}

}  // namespace tidemark
