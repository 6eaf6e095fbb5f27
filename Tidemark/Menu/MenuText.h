#pragma once

#include <QString>

#include <string_view>

namespace tidemark {

/// Who draws a menu.
enum class MenuHost {
    widgets,  ///< Qt, in which "&" marks a mnemonic.
    statusNotifier,  ///< The panel: Qt turns the first "&" into "_", which marks a mnemonic there.
};

/// What an action has to be called for `text`, one line without mnemonics, to read as it is.
QString menuText(const QString& text, MenuHost host);

/// The first and the last part of a line that would make a menu very wide.
QString menuLine(std::string_view text);

}  // namespace tidemark
