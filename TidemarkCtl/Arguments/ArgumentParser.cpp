#include "ArgumentParser.h"

#include "Text.h"
#include "UsageError.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

namespace tidemark {

namespace {

struct CommandName {
    std::string_view name;
    Command command;
};

constexpr std::array commandNames{
    CommandName{"status", Command::status},
    CommandName{"preview", Command::preview},
    CommandName{"sweep", Command::sweep},
    CommandName{"undo", Command::undo},
    CommandName{"activity", Command::activity},
    CommandName{"pause", Command::pause},
    CommandName{"resume", Command::resume},
    CommandName{"folders", Command::listFolders},
    CommandName{"watch", Command::watch},
};

constexpr std::array foldersCommandNames{
    CommandName{"list", Command::listFolders},
    CommandName{"add", Command::addFolders},
    CommandName{"remove", Command::removeFolders},
};

std::string inQuotes(std::string_view text)
{
    return "'" + std::string{text} + "'";
}

std::optional<Command> find(std::string_view name, std::span<const CommandName> names)
{
    const auto found = std::ranges::find(names, name, &CommandName::name);
    if (found == names.end())
        return std::nullopt;
    return found->command;
}

bool takesNow(Command command)
{
    return command == Command::preview || command == Command::sweep || command == Command::undo;
}

bool takesPaths(Command command)
{
    return command == Command::addFolders || command == Command::removeFolders;
}

Date parsedDate(std::string_view text)
{
    if (const auto date = parseISO8601(text))
        return *date;
    throw UsageError{"--now needs a date such as 2024-05-03T14:05:00Z, not " + inQuotes(text)};
}

int parsedLimit(std::string_view text)
{
    int limit = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    const bool isNumber = error != std::errc::invalid_argument && end == text.data() + text.size();
    if (!isNumber || text.starts_with('-'))
        throw UsageError{"--limit needs a whole number from 0 on, not " + inQuotes(text)};
    // More than fits is as good as all there is.
    return error == std::errc::result_out_of_range ? std::numeric_limits<int>::max() : limit;
}

WatchBackend parsedBackend(std::string_view text)
{
    if (text == "fanotify")
        return WatchBackend::fanotify;
    if (text == "inotify")
        return WatchBackend::inotify;
    throw UsageError{"--backend is fanotify or inotify, not " + inQuotes(text)};
}

/// One pass over the arguments: words and options are told apart, then given their meaning.
class Parser {
public:
    explicit Parser(std::span<const char* const> arguments)
        : m_rest(arguments)
    {
    }

    Invocation parse()
    {
        while (!m_rest.empty())
            readArgument(next());
        interpretWords();
        if (m_invocation.mode == Invocation::Mode::run)
            checkOptions();
        return m_invocation;
    }

private:
    std::string_view next()
    {
        const std::string_view argument = m_rest.front();
        m_rest = m_rest.subspan(1);
        if (!isValidUTF8(argument))
            throw UsageError{"the argument " + inQuotes(argument) + " is not valid UTF-8"};
        return argument;
    }

    void readArgument(std::string_view argument)
    {
        if (m_optionsEnded || !argument.starts_with('-') || argument == "-")
            m_words.emplace_back(argument);
        else if (argument == "--")
            m_optionsEnded = true;
        else
            readOption(argument);
    }

    void readOption(std::string_view argument)
    {
        const auto equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        std::optional<std::string_view> value;
        if (equals != std::string_view::npos)
            value = argument.substr(equals + 1);

        if (name == "--support" || name == "--now" || name == "--limit" || name == "--backend")
            readValue(name, value);
        else if (value)
            throw UsageError{isSwitch(name) ? std::string{name} + " takes no value"
                                            : "unknown option " + inQuotes(name)};
        else
            readSwitch(name);
    }

    static bool isSwitch(std::string_view name)
    {
        return name == "--json" || name == "--help" || name == "-h" || name == "--version";
    }

    void readSwitch(std::string_view name)
    {
        if (!isSwitch(name))
            throw UsageError{"unknown option " + inQuotes(name)};
        if (name == "--json")
            m_invocation.json = true;
        else if (name == "--version")
            m_invocation.mode = Invocation::Mode::version;
        else
            m_invocation.mode = Invocation::Mode::help;
    }

    void readValue(std::string_view name, std::optional<std::string_view> value)
    {
        if (!value) {
            if (m_rest.empty())
                throw UsageError{std::string{name} + " needs a value"};
            value = next();
        }
        if (name == "--support")
            setOnce(m_invocation.supportFolder, std::string{*value}, name);
        else if (name == "--now")
            setOnce(m_invocation.now, parsedDate(*value), name);
        else if (name == "--backend")
            setOnce(m_invocation.watchBackend, parsedBackend(*value), name);
        else
            setOnce(m_limit, parsedLimit(*value), name);
        if (name == "--support" && value->empty())
            throw UsageError{"--support needs a folder"};
    }

    template <typename Value>
    static void setOnce(std::optional<Value>& option, Value value, std::string_view name)
    {
        if (option)
            throw UsageError{std::string{name} + " is given twice"};
        option = std::move(value);
    }

    void interpretWords()
    {
        if (m_words.empty()) {
            if (m_invocation.mode == Invocation::Mode::run)
                throw UsageError{"no command given"};
            return;
        }
        m_invocation.command = find(m_words[0], commandNames);
        if (!m_invocation.command)
            throw UsageError{"unknown command " + inQuotes(m_words[0])};
        if (*m_invocation.command == Command::listFolders)
            interpretFoldersWords();
        else
            refuseWordsFrom(1, m_words[0]);
    }

    void interpretFoldersWords()
    {
        if (m_words.size() == 1)
            return;
        const std::string name = "folders " + m_words[1];
        m_invocation.command = find(m_words[1], foldersCommandNames);
        if (!m_invocation.command)
            throw UsageError{"unknown command " + inQuotes(name)};
        if (!takesPaths(*m_invocation.command))
            return refuseWordsFrom(2, name);
        m_invocation.paths.assign(m_words.begin() + 2, m_words.end());
        checkPaths(name);
    }

    void refuseWordsFrom(std::size_t count, const std::string& command) const
    {
        if (m_words.size() > count)
            throw UsageError{command + " takes no argument " + inQuotes(m_words[count])};
    }

    void checkPaths(const std::string& command) const
    {
        if (m_invocation.paths.empty() && m_invocation.mode == Invocation::Mode::run)
            throw UsageError{command + " needs at least one folder"};
        if (std::ranges::any_of(m_invocation.paths, &std::string::empty))
            throw UsageError{command + " cannot work on an empty path"};
    }

    void checkOptions()
    {
        const Command command = *m_invocation.command;
        if (m_invocation.now && !takesNow(command))
            throw UsageError{"--now does not belong to " + m_words[0]};
        if (m_invocation.json && command == Command::watch)
            throw UsageError{"--json does not belong to watch"};
        if (m_invocation.watchBackend && command != Command::watch)
            throw UsageError{"--backend does not belong to " + m_words[0]};
        if (m_limit && command != Command::activity)
            throw UsageError{"--limit does not belong to " + m_words[0]};
        m_invocation.limit = m_limit.value_or(m_invocation.limit);
    }

    std::span<const char* const> m_rest;
    std::vector<std::string> m_words;
    bool m_optionsEnded = false;
    std::optional<int> m_limit;
    Invocation m_invocation;
};

}  // namespace

Invocation parseArguments(std::span<const char* const> arguments)
{
    return Parser{arguments}.parse();
}

}  // namespace tidemark
