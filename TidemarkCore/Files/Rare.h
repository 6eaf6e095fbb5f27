#pragma once

#include <memory>
#include <optional>
#include <utility>

namespace tidemark {

/// An optional value that is absent mostly, and takes no more room than a pointer then. Copied and compared
/// like std::optional.
template <typename Value>
class Rare {
public:
    Rare() = default;
    Rare(std::nullopt_t) { }
    Rare(Value value)
        : m_value(std::make_unique<Value>(std::move(value)))
    {
    }
    Rare(std::optional<Value> value)
        : m_value(value ? std::make_unique<Value>(*std::move(value)) : nullptr)
    {
    }

    Rare(const Rare& other)
        : m_value(other ? std::make_unique<Value>(*other) : nullptr)
    {
    }
    Rare& operator=(const Rare& other)
    {
        m_value = Rare(other).m_value;
        return *this;
    }
    Rare(Rare&&) noexcept = default;
    Rare& operator=(Rare&&) noexcept = default;
    ~Rare() = default;

    explicit operator bool() const { return has_value(); }
    bool has_value() const { return m_value != nullptr; }

    /// Of a value that is there.
    const Value& operator*() const { return *m_value; }
    const Value* operator->() const { return m_value.get(); }
    Value* operator->() { return m_value.get(); }

    bool operator==(const Rare& other) const
    {
        return has_value() == other.has_value() && (!has_value() || *m_value == *other.m_value);
    }

private:
    std::unique_ptr<Value> m_value;
};

}  // namespace tidemark
