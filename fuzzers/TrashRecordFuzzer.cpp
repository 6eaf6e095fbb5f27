#include "TrashRecord.h"

#include "Require.h"
#include "Text.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <string_view>

namespace tidemark {

static int valueOfDigit(char digit)
{
    const std::size_t value = std::string_view{"0123456789ABCDEF"}.find(digit);
    require(value != std::string_view::npos, "an escape has two digits");
    return static_cast<int>(value);
}

/// Takes the escapes out of a record's path as other programs do.
static std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        require(text[at] > 0x20 && text[at] < 0x7F, "a record's path is plain ASCII");
        if (text[at] != '%') {
            result += text[at];
            continue;
        }
        require(at + 2 < text.size(), "an escape has two digits");
        result += static_cast<char>(valueOfDigit(text[at + 1]) * 16 + valueOfDigit(text[at + 2]));
        at += 2;
    }
    return result;
}

/// Takes the first line off `text`, which has one, and what it has to begin with off the line.
static std::string_view takeLine(std::string_view& text, std::string_view head)
{
    const std::size_t end = text.find('\n');
    require(end != std::string_view::npos && text.starts_with(head), "a record has its lines");
    const std::string_view line = text.substr(head.size(), end - head.size());
    text.remove_prefix(end + 1);
    return line;
}

static void requireRecordToTell(std::string_view path, Date date)
{
    const std::string text = TrashRecord::text(path, date);
    std::string_view rest = text;
    require(takeLine(rest, "[Trash Info]").empty(), "a record begins with its group");
    require(unescaped(takeLine(rest, "Path=")) == path, "a record tells the very path");
    const std::string_view moment = takeLine(rest, "DeletionDate=");
    require(parseISO8601(std::string{moment} + 'Z').has_value(), "a record has a date");
    require(rest.empty(), "a record has three lines");
}

static void requireNamesToFit(const std::string& name)
{
    constexpr std::size_t longest = 255 - std::string_view{".trashinfo"}.size();
    std::set<std::string> numbered;
    for (const int number : {1, 2, 3, 99, 10'000}) {
        const std::string given = TrashRecord::nameInTrash(name, number);
        require(isFileName(given) && given.size() <= longest, "a name fits with its record");
        require(!isValidUTF8(name) || isValidUTF8(given), "a name is cut between characters");
        require(number > 1 || name.size() > longest || given == name, "a name that fits is kept");
        require(number == 1 || numbered.insert(given).second, "a number makes another name");
    }
}

}  // namespace tidemark

/// Whatever a file is called (after a moment of eight bytes, up to the first NUL) and wherever it came
/// from (the rest): its name in the Trash is one, and its record tells other programs the way back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    double moment = 0;
    if (size < sizeof(moment))
        return 0;
    std::memcpy(&moment, data, sizeof(moment));
    const std::string_view text{
        reinterpret_cast<const char*>(data) + sizeof(moment), size - sizeof(moment)};
    if (std::isfinite(moment)) {
        const std::string_view path = text.substr(text.find('\0') + 1);
        requireRecordToTell(path.substr(0, path.find('\0')), Date{Seconds{moment}});
    }
    const std::string name{text.substr(0, text.find('\0'))};
    if (isFileName(name) && name.size() <= 255)
        requireNamesToFit(name);
    return 0;
}
