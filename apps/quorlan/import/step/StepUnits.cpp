#include "step/StepUnits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace QuorlanProgram::Import {

namespace {

constexpr int kDeepestUnit = 8;  ///< a chain of conversions that is longer is one that meets itself

constexpr std::array<std::pair<std::string_view, double>, 8> kPrefixes{{{".KILO.", 1e3},
                                                                        {".HECTO.", 1e2},
                                                                        {".DECA.", 1e1},
                                                                        {".DECI.", 1e-1},
                                                                        {".CENTI.", 1e-2},
                                                                        {".MILLI.", 1e-3},
                                                                        {".MICRO.", 1e-6},
                                                                        {".NANO.", 1e-9}}};

std::string_view Inside(std::string_view text) {
    auto const open = text.find('(');
    auto const close = text.rfind(')');
    return open == std::string_view::npos || close == std::string_view::npos || close < open
               ? std::string_view()
               : text.substr(open + 1, close - open - 1);
}

class UnitFinder {
public:
    explicit UnitFinder(std::vector<StepStatement> const& statements) {
        for (auto const& statement : statements) {
            auto const isWanted = IsNamed(statement, "IFCSIUNIT") || IsNamed(statement, "IFCCONVERSIONBASEDUNIT") ||
                                  IsNamed(statement, "IFCMEASUREWITHUNIT");
            if (isWanted) units_.emplace(statement.id, &statement);
        }
    }

    static bool IsNamed(StepStatement const& statement, std::string_view name) { return statement.name == name; }

    double Find(StepStatement const& assignment) const {
        for (auto const reference : SplitArguments(Inside(assignment.arguments))) {
            auto const* unit = Get(reference);
            if (!unit) continue;
            auto const arguments = SplitArguments(unit->arguments);
            if (arguments.size() > 1 && arguments[1] == ".LENGTHUNIT.") return GetSize(*unit, kDeepestUnit);
        }
        return 0;
    }

private:
    StepStatement const* Get(std::string_view reference) const {
        std::uint32_t id = 0;
        if (reference.empty() || reference.front() != '#') return nullptr;
        std::from_chars(reference.data() + 1, reference.data() + reference.size(), id);
        auto const found = units_.find(id);
        return found == units_.end() ? nullptr : found->second;
    }

    double GetSize(StepStatement const& unit, int depth) const {
        auto const arguments = SplitArguments(unit.arguments);
        if (depth == 0) return 0;
        if (IsNamed(unit, "IFCSIUNIT")) {
            if (arguments.size() < 3) return 0;
            auto const* prefix = std::find_if(kPrefixes.begin(), kPrefixes.end(),
                                              [&](auto const& entry) { return entry.first == arguments[2]; });
            return prefix == kPrefixes.end() ? 1 : prefix->second;
        }
        auto const* factor =
            IsNamed(unit, "IFCCONVERSIONBASEDUNIT") && arguments.size() > 3 ? Get(arguments[3]) : &unit;
        if (!factor || !IsNamed(*factor, "IFCMEASUREWITHUNIT")) return 0;
        auto const measure = SplitArguments(factor->arguments);
        if (measure.size() < 2) return 0;
        auto const number = Trim(Inside(measure[0]));
        double value = 0;
        std::from_chars(number.data(), number.data() + number.size(), value);
        auto const* base = Get(measure[1]);
        return base ? value * GetSize(*base, depth - 1) : 0;
    }

    std::unordered_map<std::uint32_t, StepStatement const*> units_;
};

}  // namespace

double FindMetresPerUnit(std::vector<StepStatement> const& statements) {
    auto const assignment = std::find_if(statements.begin(), statements.end(), [](auto const& statement) {
        return UnitFinder::IsNamed(statement, "IFCUNITASSIGNMENT");
    });
    return assignment == statements.end() ? 0 : UnitFinder(statements).Find(*assignment);
}

}  // namespace QuorlanProgram::Import
