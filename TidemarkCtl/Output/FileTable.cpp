#include "FileTable.h"

#include "DisplayText.h"

#include <algorithm>

namespace tidemark {

namespace {

struct Widths {
    std::size_t lead = 0;
    std::size_t name = 0;
};

Widths measured(std::size_t count, const std::function<FileRow(std::size_t)>& columnsAt)
{
    // One very long name must not push everything else off the screen.
    constexpr std::size_t widestName = 44;
    Widths widths;
    for (std::size_t index = 0; index < count; ++index) {
        const FileRow row = columnsAt(index);
        widths.lead = std::max(widths.lead, displayWidth(row.lead));
        if (const std::size_t width = displayWidth(row.name); width <= widestName)
            widths.name = std::max(widths.name, width);
    }
    return widths;
}

void printRow(const FileRow& row, const Widths& widths, TextPrinter& printer)
{
    printer.print("  ");
    if (widths.lead > 0) {
        printer.printPadded(row.lead, widths.lead, row.emphasis);
        printer.print("  ");
    }
    if (row.detail.empty())
        return printer.printLine(row.name);
    printer.printPadded(row.name, widths.name);
    printer.print("  ");
    printer.printLine(row.detail, row.emphasis == Emphasis::bad ? Emphasis::bad : Emphasis::none);
}

}  // namespace

void printFileTable(
    std::size_t count, const std::function<FileRow(std::size_t)>& rowAt, TextPrinter& printer)
{
    printFileTable(count, rowAt, rowAt, printer);
}

void printFileTable(std::size_t count, const std::function<FileRow(std::size_t)>& columnsAt,
    const std::function<FileRow(std::size_t)>& rowAt, TextPrinter& printer)
{
    const Widths widths = measured(count, columnsAt);
    std::string folder;
    for (std::size_t index = 0; index < count; ++index) {
        const FileRow row = rowAt(index);
        if (row.folder != folder)
            printer.printLine(row.folder, Emphasis::strong);
        folder = row.folder;
        printRow(row, widths, printer);
    }
}

}  // namespace tidemark
