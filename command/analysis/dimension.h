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
[[nodiscard]] constexpr Word bitOf(std::size_t box) {
    return Word{1} << box % kWordBits;
}
[[nodiscard]] inline std::size_t firstBitOf(Word word) {
    return static_cast<std::size_t>(__builtin_ctzll(word));
}

[[nodiscard]] inline std::size_t lastBitOf(Word word) {
    return kWordBits - 1 - static_cast<std::size_t>(__builtin_clzll(word));
}

class Dimension {
  public:
    // `sets` are the sets that the boxes use, the first being null for every number; `setOfBox` has
    // the index of each box's own. Examples are taken from the first of `preferred` that has any.
    Dimension(Number last,
              std::vector<SetPointer> sets,
              const std::vector<std::uint32_t>& setOfBox,
              Intervals preferred);

    [[nodiscard]] std::size_t size() const { return classes_.size(); }

    // The classes in a set.
    [[nodiscard]] const Bits& classesIn(std::uint32_t set) const { return classesIn_[set]; }
    // Bits::npos when they have none in common.
    [[nodiscard]] std::size_t firstClassInBoth(std::uint32_t one, std::uint32_t other) const;

    // How much of all classes that is, from 0 to 1.
    [[nodiscard]] double shareOf(std::uint32_t set) const { return shares_[set]; }

    // The boxes that a class is in. The classes are sorted so that the first is in the fewest: in
    // none that names a set, if there is such a class.
    [[nodiscard]] const Word* boxesAt(std::size_t index) const { return rowAt(classes_[index]); }

    // The boxes that have a number of the set.
    [[nodiscard]] const Word* boxesTouching(std::uint32_t set) const;

    [[nodiscard]] std::size_t classOf(Number number) const;
    [[nodiscard]] Number numberIn(std::size_t index) const;

    // The numbers of some classes. Throws Failure when they are too many intervals to be listed.
    [[nodiscard]] Intervals numbersIn(const Bits& classes) const;

  private:
    struct Class {
        Intervals intervals;
        std::vector<PatternTerm> terms;
        std::size_t row = 0;     // in rows_
        std::size_t weight = 0;  // the number of boxes that it is in
        std::size_t base = 0;    // the same for classes that patterns cut out of one
    };
    // A part of the number line between two ends of sets. It ends where the next begins.
    struct Stretch {
        Number first = 0;
        std::size_t index = 0;      // of its class
        std::size_t endOfSets = 0;  // in beginning_, of those that begin here
    };
    class Sweep;

    [[nodiscard]] const Word* rowAt(const Class& entry) const {
        return rows_.data() + entry.row * words_;
    }
    void listBoxes(const std::vector<std::uint32_t>& setOfBox);
    template <typename Visit>
    void forEachBoxOf(std::uint32_t set, Visit visit) const;
    void splitByPatterns();
    void splitBy(std::uint32_t set);
    void sortByWeight();
    void listClasses(const std::vector<std::uint32_t>& setOfBox);
    void addStretchesOf(const Interval& interval, BoxMask& boxes) const;
    [[nodiscard]] Intervals uncutNumbersIn(const Bits& classes) const;
    void appendParts(const std::vector<std::size_t>& parts, Intervals& numbers) const;

    Number last_;
    std::vector<SetPointer> sets_;
    Intervals preferred_;
    std::size_t words_;
    std::vector<std::size_t> boxesOfSets_;  // one set after the other
    std::vector<std::size_t> boxesBegin_;   // where each set's begin there, and the end
    std::vector<Class> classes_;
    std::vector<Word> rows_;                // of boxes
    std::vector<Stretch> stretches_;        // in order
    std::vector<std::uint32_t> beginning_;  // the sets that begin with a stretch
    bool hasPatterns_ = false;
    std::vector<Bits> classesIn_;
    std::vector<std::size_t> firstIn_;
    std::vector<double> shares_;
    mutable std::vector<BoxMask> touching_;
};

}  // namespace zamofw::analysis

#endif
