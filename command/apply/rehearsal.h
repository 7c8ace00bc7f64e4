// A plan's lines, tried in a packet filter that nobody else sees.
#ifndef COMMAND_APPLY_REHEARSAL_H
#define COMMAND_APPLY_REHEARSAL_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "command/apply/program.h"
#include "command/apply/savedTable.h"
#include "command/apply/scratchNetwork.h"
#include "command/apply/transaction.h"
#include "command/plan/plan.h"

namespace zamofw {

// Told after each refused line how many there are so far.
using NoteRefused = std::function<void(std::size_t)>;

// The lines of one family, and the chains that they will meet: those that are there already. All
// that is done with it, is done in the scratch network.
class Rehearsal {
  public:
    // Lines that no input can say count as refused.
    Rehearsal(const Plan& plan, int family, const SavedTables& there);
    ~Rehearsal() = default;
    Rehearsal(const Rehearsal&) = delete;
    Rehearsal& operator=(const Rehearsal&) = delete;

    // Makes the chains, empty. Throws Failure when the program cannot work here.
    void prepare() const;
    // Starts to put all lines in that have not been refused.
    [[nodiscard]] Program start() const;
    // The refused lines are taken out, so that another start succeeds. Throws Failure when the
    // program fails for another reason.
    void findRefused(const ProgramResult& failure, const NoteRefused& note);

    [[nodiscard]] int family() const { return family_; }
    // In the order of the lines.
    [[nodiscard]] std::vector<Refusal> refused() const;
    // The lines of a chain that have not been refused, once for each rule that the program makes
    // of them.
    [[nodiscard]] std::vector<const PlannedLine*> plannedIn(const std::string& table,
                                                            const std::string& chain) const;

  private:
    struct Attempt {
        std::string text;
        std::vector<std::size_t> indices;  // of each of its lines
    };

    void takeOutUnsayable(const Plan& plan);
    [[nodiscard]] bool isRule(std::size_t index) const { return text_.origins[index] != nullptr; }
    [[nodiscard]] Attempt attempt(std::size_t begin, std::size_t end) const;
    [[nodiscard]] Program start(const Attempt& attempt) const;
    void refuse(std::size_t index, const std::string& words);
    void refuseSome(const Attempt& tried,
                    const ProgramResult& failure,
                    const NoteRefused& note,
                    std::size_t& begin);
    [[nodiscard]] std::string wordsAbout(std::size_t index) const;
    [[nodiscard]] std::size_t refuseNamed(const Attempt& attempt, const ProgramResult& failure);
    void refuseTable(const Attempt& attempt, std::size_t opening, const ProgramResult& failure);
    void refuseWithin(const std::vector<std::size_t>& rules, const NoteRefused& note);

    int family_;
    Plan plan_;  // of this family alone
    RestoreText text_;
    std::vector<std::string> lines_;
    std::vector<bool> isOut_;
    std::vector<std::string> tables_;
    std::vector<std::string> chainInputs_;  // for each table
    std::vector<Refusal> unsayable_;
    std::map<std::size_t, Refusal> refused_;  // by the index of the line
};

// Throws Failure when it could not be entered.
void requireEntered(const ScratchNetwork& network);

// All lines of the plan that this kernel refuses, each with the program's own words, IPv4 first.
// Throws Failure when they cannot be tried.
[[nodiscard]] std::vector<Refusal> rehearse(const Plan& plan, const NoteRefused& note = nullptr);

}  // namespace zamofw

#endif
