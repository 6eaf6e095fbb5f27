#pragma once

#include "TextPrinter.h"

#include <cstddef>
#include <functional>
#include <string>

namespace tidemark {

/// One file in a list for people, in pieces that are safe to display.
struct FileRow {
    std::string folder = {};  ///< What the row stands under: a heading comes where it changes.
    std::string lead = {};  ///< The first column, such as what was done.
    std::string name = {};
    std::string detail = {};
    Emphasis emphasis = Emphasis::none;  ///< Of the first column and the detail.
};

/// Prints rows in aligned columns. `rowAt` is asked for each row more than once: only one at a time is kept.
void printFileTable(
    std::size_t count, const std::function<FileRow(std::size_t)>& rowAt, TextPrinter& printer);

/// The same for very many rows: `columnsAt` gives no more of a row than its lead and name.
void printFileTable(std::size_t count, const std::function<FileRow(std::size_t)>& columnsAt,
    const std::function<FileRow(std::size_t)>& rowAt, TextPrinter& printer);

}  // namespace tidemark
