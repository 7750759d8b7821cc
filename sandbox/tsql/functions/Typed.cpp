#include "functions/Typed.h"

#include <charconv>

#include "storage/Connection.h"
#include "types/SqlTypes.h"

namespace tsql {

Typed nullLiteral() {
    return {"NULL", simpleType(TypeId::Int), true};
}

Typed typedConstant(std::string sql, const TypedValue& constant) {
    Typed result{std::move(sql), constant.type, isNull(constant.value)};
    result.nullable = result.nullLiteral;
    const auto* integer = std::get_if<std::int64_t>(&constant.value);
    if (integer && constant.type.id == TypeId::Int) result.integer = *integer;
    return result;
}

Typed literal(const TypedValue& constant) {
    struct ConstantWriter {
        std::string operator()(Null) const { return "NULL"; }
        std::string operator()(std::int64_t number) const { return std::to_string(number); }
        std::string operator()(double number) const {
            char digits[40];
            return {digits,
                    std::to_chars(digits, digits + sizeof digits, number, std::chars_format::scientific).ptr};
        }
        std::string operator()(const std::string& text) const {
            if (text.find('\0') == std::string::npos) return quotedText(text);
            // SQLite's parser stops at a NUL.
            return "CAST(x'" + hexDigits(std::as_bytes(std::span(text))) + "' AS TEXT)";
        }
        std::string operator()(const Bytes& bytes) const { return "x'" + hexDigits(bytes) + "'"; }
    };
    return typedConstant(std::visit(ConstantWriter{}, constant.value), constant);
}

Typed wordArgument(std::string_view word) {
    return {{}, {}, false, {}, std::string(word)};
}

}  // namespace tsql
