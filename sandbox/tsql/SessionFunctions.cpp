// The functions of SQLite that reach back into the session: live variables, calls of T-SQL functions, and the
// guard over subqueries that must give one value.
#include <new>

#include "Executor.h"
#include "FunctionImpl.h"
#include "Messages.h"

namespace tsql {
namespace {

Executor& executorOf(sqlite3_context* context) {
    return *static_cast<Executor*>(sqlite3_user_data(context));
}

// Nothing thrown may pass through SQLite: the error waits in the session.
template <typename Work>
void guarded(sqlite3_context* context, Work work) {
    try {
        giveResult(context, work());
    } catch (const SqlError& error) {
        executorOf(context).setFunctionError(error);
        sqlite3_result_error(context, error.what(), -1);
    } catch (const BatchEnd&) {
        sqlite3_result_error_code(context, SQLITE_INTERRUPT);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

void variable(sqlite3_context* context, int, sqlite3_value** arguments) {
    guarded(context, [&] {
        return executorOf(context).variableValue(std::get<std::string_view>(viewOf(arguments[0])));
    });
}

void call(sqlite3_context* context, int count, sqlite3_value** arguments) {
    guarded(context, [&] {
        const Arguments given(count, arguments);
        const auto views = given.views();
        return executorOf(context).callFunction(std::get<std::string_view>(views[0]),
                                                std::get<std::string_view>(views[1]), views.subspan(2));
    });
}

struct Single {
    sqlite3_value* value;
};

void singleStep(sqlite3_context* context, int, sqlite3_value** arguments) {
    auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, sizeof(Single)));
    if (!single) return sqlite3_result_error_nomem(context);
    if (!single->value) {
        single->value = sqlite3_value_dup(arguments[0]);
        return;
    }
    const SqlError error = sqlError(512);
    executorOf(context).setFunctionError(error);
    sqlite3_result_error(context, error.what(), -1);
}

void singleFinal(sqlite3_context* context) {
    auto* single = static_cast<Single*>(sqlite3_aggregate_context(context, 0));
    if (!single || !single->value) return;
    sqlite3_result_value(context, single->value);
    sqlite3_value_free(single->value);
}

// What the system's views tell of a type, given by its code.
using TypeFact = Value (*)(const SqlType&);
void typeFact(sqlite3_context* context, int, sqlite3_value** arguments) {
    const TypeFact fact = *static_cast<const TypeFact*>(sqlite3_user_data(context));
    giveResult(context, fact(decodeType(sqlite3_value_int64(arguments[0]))));
}

// sys.types.system_type_id, in the order of TypeId.
constexpr int kSystemTypeIds[] = {104, 48, 52, 56,  127, 106, 122, 60, 59, 62, 175, 167, 239,
                                  231, 35, 99, 241, 40,  41,  61,  58, 42, 36, 173, 165, 34};

std::string familyOf(const SqlType& type) {
    return isNumber(type.id)     ? isExact(type.id) ? "n" : "f"
           : isText(type.id)     ? "t"
           : isDateTime(type.id) ? "d"
                                 : "";
}

Value charactersOf(const SqlType& type) {
    constexpr std::int64_t kLongest = 2'147'483'647;
    if (!isText(type.id) && !isBinary(type.id)) return Null{};
    if (type.id == TypeId::Text || type.id == TypeId::Image) return kLongest;
    if (type.id == TypeId::NText) return kLongest / 2;
    return std::int64_t{type.id == TypeId::Xml ? SqlType::kMax : type.length};
}

// What sys.columns has as precision: of a date or time, the characters of its text.
std::int64_t digitsOf(const SqlType& type) {
    constexpr int kDate = 10, kMinutes = 16, kSeconds = 19, kReal = 24, kFloat = 53;
    const int point = type.scale ? type.scale + 1 : 0;
    if (type.id == TypeId::Date) return kDate;
    if (type.id == TypeId::Time) return kSeconds - kDate - 1 + point;
    if (type.id == TypeId::SmallDateTime) return kMinutes;
    if (isDateTime(type.id)) return kSeconds + point;
    if (isApproximate(type.id)) return type.id == TypeId::Real ? kReal : kFloat;
    return isExact(type.id) ? precisionOf(type) : 0;
}

}  // namespace

void registerSessionFunctions(sqlite3* connection, Executor& executor) {
    constexpr int kFlags = SQLITE_UTF8;
    static constexpr std::pair<const char*, TypeFact> kTypeFacts[] = {
        {"ts_type_name", [](const SqlType& type) { return Value(std::string(baseName(type.id))); }},
        {"ts_type_id",
         [](const SqlType& type) { return Value(std::int64_t{kSystemTypeIds[static_cast<int>(type.id)]}); }},
        {"ts_type_family", [](const SqlType& type) { return Value(familyOf(type)); }},
        {"ts_type_length", [](const SqlType& type) { return Value(std::int64_t{maxLength(type)}); }},
        {"ts_type_characters", charactersOf},
        {"ts_type_precision", [](const SqlType& type) { return Value(digitsOf(type)); }},
        {"ts_type_scale", [](const SqlType& type) { return Value(std::int64_t{type.scale}); }},
    };
    for (const auto& [name, fact] : kTypeFacts)
        sqlite3_create_function_v2(connection, name, 1, kFlags | SQLITE_DETERMINISTIC,
                                   const_cast<TypeFact*>(&fact), typeFact, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(connection, "ts_variable", 1, kFlags, &executor, variable, nullptr, nullptr,
                               nullptr);
    sqlite3_create_function_v2(connection, "ts_call", -1, kFlags, &executor, call, nullptr, nullptr, nullptr);
    sqlite3_create_function_v2(connection, "ts_single", 1, kFlags, &executor, nullptr, singleStep,
                               singleFinal, nullptr);
}

}  // namespace tsql
