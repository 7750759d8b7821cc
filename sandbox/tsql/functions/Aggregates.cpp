// T-SQL's aggregates, as SQLite aggregates.
#include <sqlite3.h>

#include <cmath>
#include <new>

#include "functions/SqliteFunction.h"

namespace tsql {
namespace {

constexpr std::size_t kMostTextBytes = 1'000'000'000;  // SQLite's limit

struct Gathered {
    std::int64_t count = 0;
    Int128 sum = 0;      // sum of scaled integers
    double mean = 0;     // of approximate numbers
    double squares = 0;  // sum of squared distances from the mean
    struct Part {
        std::string separator, text;
        std::vector<Value> keys;
    };
    std::vector<Part> parts;         // arguments of STRING_AGG
    std::size_t bytes = 0;           // total length of the parts
    std::vector<bool> descending{};  // of each sort key
    std::int64_t longest = 0;        // longest result in characters
};

struct Aggregate {
    std::string name;
    // `sign`: 1 for a value that enters a window frame, -1 for one that leaves it; it is counted already.
    void (*step)(Gathered& gathered, const SqlCall& arguments, int sign);
    Value (*result)(const Gathered& gathered, const Aggregate& aggregate);
    SqlType type = {};  // type of an exact result
    int digits = 0;     // additional fraction digits of an average
};

const SqlType kSumType = decimalType(kMostDigits, 0);

void addExact(Gathered& gathered, const SqlCall& arguments, int sign) {
    gathered.sum += sign * exactOf(arguments[0]);
    if (!fits(gathered.sum, kSumType)) throwOverflow(kSumType);
}

// Welford's algorithm: stable for large values that are close together.
void addSpread(Gathered& gathered, const SqlCall& arguments, int sign) {
    const double value = arguments.real(0), distance = value - gathered.mean;
    if (gathered.count > 0) gathered.mean += sign * distance / static_cast<double>(gathered.count);
    gathered.squares += sign * distance * (value - gathered.mean);
}

// (string, separator, most characters or kMax[, is descending, key]...)
void addText(Gathered& gathered, const SqlCall& arguments, int) {
    auto& part = gathered.parts.emplace_back();
    part.text = arguments.text(0);
    part.separator = arguments.text(1);
    gathered.bytes += part.text.size() + part.separator.size();
    if (gathered.bytes > kMostTextBytes) throw unsupported("STRING_AGG beyond 1,000,000,000 bytes");
    gathered.descending.clear();
    gathered.longest = arguments.integer(2);
    for (std::size_t i = 3; i + 1 < arguments.count(); i += 2) {
        gathered.descending.push_back(arguments.integer(i) != 0);
        part.keys.push_back(ownedValue(arguments[i + 1]));
    }
}

// NULL first, then in the order of ORDER BY.
int compareKeys(const Value& left, const Value& right) {
    const auto *text = std::get_if<std::string>(&left), *other = std::get_if<std::string>(&right);
    if (text && other) return compareText(*text, *other);
    return left < right ? -1 : static_cast<int>(right < left);
}

Value exactSum(const Gathered& gathered, const Aggregate& aggregate) {
    return checkedCell(gathered.sum, aggregate.type);
}

Value exactAverage(const Gathered& gathered, const Aggregate& aggregate) {
    exactSum(gathered, aggregate);  // which may overflow
    const Int128 average = exactResult(BinaryOp::Divide, gathered.sum, kSumType, gathered.count,
                                       simpleType(TypeId::BigInt), aggregate.digits);
    return checkedCell(average, aggregate.type);
}

// `sample`: divides by one less than the number of values.
template <bool sample, bool root>
Value spread(const Gathered& gathered, const Aggregate&) {
    const std::int64_t divisor = gathered.count - (sample ? 1 : 0);
    if (divisor == 0) return Null{};
    const double variance = gathered.squares / static_cast<double>(divisor);
    return root ? std::sqrt(variance) : variance;
}

Value aggregatedText(const Gathered& gathered, const Aggregate&) {
    std::vector<const Gathered::Part*> order;
    for (const auto& part : gathered.parts) order.push_back(&part);
    std::stable_sort(order.begin(), order.end(), [&](const auto* left, const auto* right) {
        for (std::size_t i = 0; i < left->keys.size(); ++i)
            if (const int difference = compareKeys(left->keys[i], right->keys[i]))
                return (difference > 0) == gathered.descending[i];
        return false;
    });
    std::string text;
    for (const auto* part : order) text.append(part == order.front() ? "" : part->separator) += part->text;
    if (gathered.longest != SqlType::kMax &&
        characterCount(text) > static_cast<std::size_t>(gathered.longest))
        throw sqlError(kStringAggTooLong);
    return text;
}

std::vector<Aggregate> allAggregates() {
    constexpr int kMostDigitsAdded = 6;
    std::vector<Aggregate> all = {{"ts_stdev", addSpread, spread<true, true>},
                                  {"ts_stdevp", addSpread, spread<false, true>},
                                  {"ts_var", addSpread, spread<true, false>},
                                  {"ts_varp", addSpread, spread<false, false>},
                                  {"ts_string_agg", addText, aggregatedText}};
    for (const TypeId id : {TypeId::Int, TypeId::BigInt, TypeId::Money, TypeId::Decimal}) {
        const SqlType type = id == TypeId::Decimal ? kSumType : simpleType(id);
        const std::string name(baseName(id));
        all.push_back({"ts_sum_" + name + "0", addExact, exactSum, type});
        for (int digits = 0; digits <= kMostDigitsAdded; ++digits)
            all.push_back({"ts_avg_" + name + std::to_string(digits), addExact, exactAverage, type, digits});
    }
    return all;
}

template <int sign>
void stepAggregate(sqlite3_context* call, int count, sqlite3_value** values) {
    const auto& binding = *static_cast<const Binding<Aggregate>*>(sqlite3_user_data(call));
    try {
        const SqlCall arguments(binding.session, count, values);
        if (isNull(arguments[0])) {
            if (binding.function.step != addText) binding.session.noteNullLeftOut();
            return;
        }
        // SQLite provides a zeroed slot per group. The first value allocates what it points to.
        auto** const slot = static_cast<Gathered**>(sqlite3_aggregate_context(call, sizeof(void*)));
        if (!slot) throw std::bad_alloc();
        if (!*slot) *slot = new Gathered;
        (*slot)->count += sign;
        binding.function.step(**slot, arguments, sign);
    } catch (...) {
        reportError(binding.session, call);
    }
}

// last: the group ends, also when its statement ends early.
template <bool last>
void giveAggregate(sqlite3_context* call) {
    const auto& binding = *static_cast<const Binding<Aggregate>*>(sqlite3_user_data(call));
    auto** slot = static_cast<Gathered**>(sqlite3_aggregate_context(call, 0));
    const Gathered* const gathered = slot ? *slot : nullptr;
    const std::unique_ptr<const Gathered> ended(last ? gathered : nullptr);
    try {
        if (!gathered || gathered->count == 0) return sqlite3_result_null(call);
        giveResult(call, binding.function.result(*gathered, binding.function));
    } catch (...) {
        reportError(binding.session, call);
    }
}

}  // namespace

void registerAggregates(sqlite3* connection, FunctionSession& session) {
    static const auto kAggregates = allAggregates();
    for (const Aggregate& aggregate : kAggregates) {
        const int code = sqlite3_create_window_function(
            connection, aggregate.name.c_str(), /*nArg=*/-1, SQLITE_UTF8,
            new Binding<Aggregate>{session, aggregate}, stepAggregate<1>, giveAggregate<true>,
            giveAggregate<false>, stepAggregate<-1>, Binding<Aggregate>::destroy);
        if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection));
    }
}

}  // namespace tsql
