#pragma once

#include "Comparison.h"

#include <memory>
#include <vector>

namespace tidemark::bench {

/// All comparisons, each known to Google Benchmark by its name.
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

    const std::vector<std::unique_ptr<Comparison>>& comparisons() const { return m_comparisons; }
    const std::vector<Growth>& growths() const { return m_growths; }

    bool isComparison(const std::string& name) const;

private:
    std::vector<std::unique_ptr<Comparison>> m_comparisons;
    std::vector<Growth> m_growths;
};

}  // namespace tidemark::bench
