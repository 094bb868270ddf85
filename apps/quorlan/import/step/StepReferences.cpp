#include "step/StepReferences.h"

#include <charconv>
#include <unordered_map>

namespace QuorlanProgram::Import {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

struct Reference {
    std::uint32_t target;  ///< a statement; kNone where there is none of that id
    std::size_t begin;
    std::size_t end;
};

/// The references of all statements, those of statement i from firsts[i] to firsts[i + 1].
struct ReferenceList {
    std::vector<Reference> references;
    std::vector<std::size_t> firsts;
};

ReferenceList ListReferences(std::string_view text, std::vector<StepStatement> const& statements) {
    std::unordered_map<std::uint32_t, std::uint32_t> places;
    places.reserve(statements.size());
    for (std::uint32_t i = 0; i < statements.size(); ++i) places.emplace(statements[i].id, i);
    ReferenceList list;
    list.firsts.reserve(statements.size() + 1);
    for (auto const& statement : statements) {
        list.firsts.push_back(list.references.size());
        auto const end = statement.end;
        auto at = static_cast<std::size_t>(statement.arguments.data() - text.data());
        while (at < end) {
            auto const next = SkipOpaque(text, at);
            if (next != at || text[at] != '#') {
                at = next == at ? at + 1 : next;
                continue;
            }
            std::uint32_t id = 0;
            auto const number = std::from_chars(text.data() + at + 1, text.data() + end, id);
            auto const behind = static_cast<std::size_t>(number.ptr - text.data());
            if (number.ec == std::errc()) {
                auto const place = places.find(id);
                list.references.push_back({place == places.end() ? kNone : place->second, at, behind});
            }
            at = behind;
        }
    }
    list.firsts.push_back(list.references.size());
    return list;
}

/// Walks the references depth first, without recursion: chains in broken files may be as long as the file.
class Walk {
public:
    Walk(std::vector<StepStatement> const& statements, ReferenceList const& list)
        : statements_(statements), list_(list), states_(statements.size(), State::kNew), damaged_(statements.size()) {}

    ReferenceFaults Run() {
        for (std::uint32_t i = 0; i < statements_.size(); ++i) {
            if (states_[i] == State::kNew) WalkFrom(i);
        }
        for (std::size_t i = 0; i < statements_.size(); ++i) {
            if (damaged_[i]) faults_.damaged.insert(statements_[i].id);
        }
        return std::move(faults_);
    }

private:
    enum class State : std::uint8_t { kNew, kOpen, kDone };
    struct Step {
        std::uint32_t statement;
        std::size_t next;  ///< its next reference
    };

    void WalkFrom(std::uint32_t start) {
        path_.push_back({start, list_.firsts[start]});
        states_[start] = State::kOpen;
        while (!path_.empty()) {
            auto& step = path_.back();
            if (step.next < list_.firsts[step.statement + 1]) {
                Follow(step.statement, list_.references[step.next++]);
                continue;
            }
            auto const done = step.statement;
            states_[done] = State::kDone;
            path_.pop_back();
            if (!path_.empty() && damaged_[done]) damaged_[path_.back().statement] = true;
        }
    }

    void Follow(std::uint32_t from, Reference const& reference) {
        if (reference.target == kNone) {
            ++faults_.missing;
            damaged_[from] = true;
        } else if (states_[reference.target] == State::kOpen) {
            faults_.circles.emplace_back(reference.begin, reference.end);
            damaged_[from] = true;
        } else if (states_[reference.target] == State::kNew) {
            states_[reference.target] = State::kOpen;
            path_.push_back({reference.target, list_.firsts[reference.target]});
        } else if (damaged_[reference.target]) {
            damaged_[from] = true;
        }
    }

    std::vector<StepStatement> const& statements_;
    ReferenceList const& list_;
    std::vector<State> states_;
    std::vector<bool> damaged_;
    std::vector<Step> path_;
    ReferenceFaults faults_;
};

}  // namespace

ReferenceFaults CheckReferences(std::string_view text, std::vector<StepStatement> const& statements) {
    auto const list = ListReferences(text, statements);
    return Walk(statements, list).Run();
}

}  // namespace QuorlanProgram::Import
