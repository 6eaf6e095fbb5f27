#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace tidemark::bench {

/// Something that takes long to prepare: made when it is first asked for, so that cases that are left out
/// cost nothing. Copies share it.
template <typename Value>
class Lazy {
public:
    explicit Lazy(std::function<std::unique_ptr<Value>()> make)
        : m_shared(std::make_shared<Shared>(Shared{std::move(make), nullptr}))
    {
    }

    Value& get() const
    {
        if (!m_shared->value)
            m_shared->value = m_shared->make();
        return *m_shared->value;
    }

private:
    struct Shared {
        std::function<std::unique_ptr<Value>()> make;
        std::unique_ptr<Value> value;
    };
    std::shared_ptr<Shared> m_shared;
};

}  // namespace tidemark::bench
