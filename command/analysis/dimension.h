// One dimension of packets, cut into classes that no line tells apart.
#ifndef COMMAND_ANALYSIS_DIMENSION_H
#define COMMAND_ANALYSIS_DIMENSION_H

#include <boost/dynamic_bitset.hpp>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "command/analysis/model.h"

namespace zamofw::analysis {

using Word = std::uint64_t;
constexpr std::size_t kWordBits = 64;
using Bits = boost::dynamic_bitset<Word>;  // of classes

// Boxes by index, in words, so that several such sets can be intersected in one pass.
using BoxMask = std::vector<Word>;

class Dimension {
  public:
    // `sets` are the sets that the boxes use, the first being null for every number; `setOfBox` has
    // the index of each box's own. Examples are taken from the first of `preferred` that has any.
    Dimension(Number last,
              const std::vector<SetPointer>& sets,
              const std::vector<std::uint32_t>& setOfBox,
              const Intervals& preferred);

    [[nodiscard]] std::size_t size() const { return classes_.size(); }

    // The classes in a set.
    [[nodiscard]] const Bits& classesIn(std::uint32_t set) const { return classesIn_[set]; }

    // How much of all classes that is, from 0 to 1.
    [[nodiscard]] double shareOf(std::uint32_t set) const { return shares_[set]; }

    // The boxes that a class is in. The classes are sorted so that the first is in the fewest: in
    // none that names a set, if there is such a class.
    [[nodiscard]] const Word* boxesAt(std::size_t index) const {
        return boxesAt_.data() + index * words_;
    }

    // The boxes that have a number of the set.
    [[nodiscard]] const BoxMask& boxesTouching(std::uint32_t set) const;

    [[nodiscard]] std::size_t classOf(Number number) const;
    [[nodiscard]] Number numberIn(std::size_t index) const { return classes_[index].example; }

    // The numbers of some classes. Throws Failure when they are too many intervals to be listed.
    [[nodiscard]] Intervals numbersIn(const Bits& classes) const;

  private:
    struct Class {
        Intervals intervals;
        std::vector<PatternTerm> terms;
        Number example = 0;
        Bits sets;             // that it is in
        std::size_t base = 0;  // the same for classes that patterns cut out of one
    };
    class Sweep;

    void splitByPatterns(const std::vector<SetPointer>& sets);
    void sortByWeight(const std::vector<std::uint32_t>& setOfBox, std::size_t setCount);
    void fillRows(const std::vector<std::uint32_t>& setOfBox, std::size_t setCount);
    void chooseExamples(const Intervals& preferred);
    void listStretches();
    [[nodiscard]] Intervals uncutNumbersIn(const Bits& classes) const;
    void appendParts(const std::vector<std::size_t>& parts, Intervals& numbers) const;

    std::size_t words_;
    std::vector<Class> classes_;
    bool isAnyCut_ = false;                                    // by a pattern
    std::vector<std::pair<Interval, std::size_t>> stretches_;  // with their class, in order
    std::vector<Bits> classesIn_;
    std::vector<double> shares_;
    std::vector<Word> boxesAt_;
    mutable std::vector<BoxMask> touching_;
};

}  // namespace zamofw::analysis

#endif
