#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tidemark {

/// The order in which a file browser shows names: letters without regard to case, runs of digits by their
/// value ("Report 9" before "Report 10"). The same in every locale. Names that differ only in case come
/// with the small letter first.
class NameOrder {
public:
    /// Throws std::runtime_error if the collation data of ICU is missing.
    NameOrder();
    ~NameOrder();
    NameOrder(const NameOrder&) = delete;
    NameOrder& operator=(const NameOrder&) = delete;

    /// Appends a byte string that sorts as the name does to `keys`; it is equal for names that the order
    /// cannot tell apart, such as the composed and the decomposed form of a letter. `name` is valid UTF-8.
    void appendSortKey(std::string_view name, std::string& keys) const;

private:
    struct Collator;
    std::unique_ptr<Collator> m_collator;
};

}  // namespace tidemark
