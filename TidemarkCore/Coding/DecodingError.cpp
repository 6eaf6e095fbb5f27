#include "DecodingError.h"

namespace tidemark {

static std::string sentence(
    const std::string& file, const std::string& codingPath, const std::string& reason)
{
    return codingPath.empty() ? file + ": " + reason : file + ": " + codingPath + ": " + reason;
}

DecodingError::DecodingError(std::string file, std::string codingPath, std::string reason)
    : std::runtime_error(sentence(file, codingPath, reason))
    , m_file(std::move(file))
    , m_codingPath(std::move(codingPath))
    , m_reason(std::move(reason))
{
}

}  // namespace tidemark
