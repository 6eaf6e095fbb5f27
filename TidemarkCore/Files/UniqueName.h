#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tidemark {

/// The rule by which a name that is taken is avoided: "report.pdf" becomes "report 2.pdf", then
/// "report 3.pdf"; "archive.tar.gz" becomes "archive.tar 2.gz"; "README" becomes "README 2".
namespace UniqueName {

/// `name` with `counter`, which starts at 2, before its extension.
std::string numbered(std::string_view name, unsigned long counter);

/// The first of `name`, `name` 2, `name` 3 ... that `isTaken` denies. What it throws passes through.
std::string firstFree(std::string_view name, const std::function<bool(std::string_view)>& isTaken);

}  // namespace UniqueName

}  // namespace tidemark
