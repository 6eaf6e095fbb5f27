#pragma once

#include "Comparison.h"
#include "IdleCase.h"
#include "Responsiveness.h"

#include <functional>
#include <memory>
#include <vector>

namespace tidemark::bench {

/// All that is measured beside something else, each known to Google Benchmark by its name.
class Suite {
public:
    /// That the same work on more must not cost more than `bar` times as much.
    struct Growth {
        const Comparison* small;
        const Comparison* large;
        double bar;
    };

    /// The comparison lives as long as the suite, which outlives the running of the benchmarks.
    const Comparison& add(Comparison comparison);

    void expectGrowth(const Comparison& small, const Comparison& large, double bar);

    void add(Responsiveness responsiveness);
    void add(IdleCase idleCase);

    const std::vector<std::unique_ptr<Comparison>>& comparisons() const { return m_comparisons; }
    const std::vector<Growth>& growths() const { return m_growths; }
    const std::vector<std::unique_ptr<Responsiveness>>& responsiveness() const
    {
        return m_responsiveness;
    }
    const std::vector<std::unique_ptr<IdleCase>>& idleCases() const { return m_idleCases; }

    /// Whether it is one of these, which have tables of their own.
    bool holds(const std::string& name) const;

private:
    std::vector<std::unique_ptr<Comparison>> m_comparisons;
    std::vector<Growth> m_growths;
    std::vector<std::unique_ptr<Responsiveness>> m_responsiveness;
    std::vector<std::unique_ptr<IdleCase>> m_idleCases;
};

}  // namespace tidemark::bench
