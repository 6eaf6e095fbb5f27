#include "NameOrder.h"

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <array>
#include <stdexcept>
#include <vector>

namespace tidemark {

namespace {

void requireSuccess(UErrorCode status)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string("cannot order names: ") + u_errorName(status));
}

}  // namespace

struct NameOrder::Collator {
    UCollator* handle = nullptr;

    Collator() = default;
    Collator(const Collator&) = delete;
    Collator& operator=(const Collator&) = delete;
    ~Collator()
    {
        if (handle != nullptr)
            ucol_close(handle);
    }
};

NameOrder::NameOrder()
    : m_collator(std::make_unique<Collator>())
{
    // A fixed locale: in the "C" locale of the process there is no numeric order.
    UErrorCode status = U_ZERO_ERROR;
    m_collator->handle = ucol_open("en_US", &status);
    requireSuccess(status);
    ucol_setAttribute(m_collator->handle, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
    ucol_setAttribute(m_collator->handle, UCOL_STRENGTH, UCOL_TERTIARY, &status);
    ucol_setAttribute(m_collator->handle, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    requireSuccess(status);
}

NameOrder::~NameOrder() = default;

void NameOrder::appendSortKey(std::string_view name, std::string& keys) const
{
    // A name has at most 255 bytes, so at most as many UTF-16 units; longer ones take the slow road.
    std::array<UChar, 256> fixed;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    std::vector<UChar> large;
    UChar* text = fixed.data();
    auto capacity = static_cast<int32_t>(fixed.size());
    if (name.size() > fixed.size()) {
        large.resize(name.size());
        text = large.data();
        capacity = static_cast<int32_t>(large.size());
    }
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(text, capacity, &length, name.data(), static_cast<int32_t>(name.size()), &status);
    if (status == U_STRING_NOT_TERMINATED_WARNING)
        status = U_ZERO_ERROR;
    requireSuccess(status);

    std::array<uint8_t, 512>
        buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    const int32_t needed = ucol_getSortKey(
        m_collator->handle, text, length, buffer.data(), static_cast<int32_t>(buffer.size()));
    if (needed <= static_cast<int32_t>(buffer.size())) {
        keys.append(reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(needed));
        return;
    }
    const std::size_t before = keys.size();
    keys.resize(before + static_cast<std::size_t>(needed));
    ucol_getSortKey(
        m_collator->handle, text, length, reinterpret_cast<uint8_t*>(keys.data() + before), needed);
}

}  // namespace tidemark
