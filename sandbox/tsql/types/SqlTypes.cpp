#include "types/SqlTypes.h"

#include "messages/Messages.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr int kMaxBytes = 8000, kMaxNational = 4000, kMaxDecimal = 38;

struct TypeFacts {
    std::string_view name;
    std::string_view synonyms;  // each between commas
    char family;                // types of a family have the same conversions
    int precedence;             // T-SQL's type precedence; the operand with the lower one is converted
    int precision;              // decimal digits, bits of a float, length of a date without its fraction
    int scale;
    int bytes;     // per value; per character or byte if the type has a length
    int systemId;  // sys.types.system_type_id
};

constexpr TypeFacts kTypes[] = {
#define TSQL_TYPE(id, ...) {__VA_ARGS__},
#include "types/TypeTable.inc"
#undef TSQL_TYPE
};

const TypeFacts& facts(TypeId id) {
    return kTypes[static_cast<std::size_t>(id)];
}

constexpr std::string_view kFamilyOrder = "NFDAM2OCTXUBI";
// ConversionRule from each family (row) to each (column), in kFamilyOrder.
constexpr std::string_view kConversions[] = {
    "iii----i---i-", "iii----i---i-", "eeiiiiii---e-", "--ii-iii---e-", "--i-iiii---e-",
    "--iiiiii---e-", "--iiiiii---e-", "iiiiiiiiiiiei", "-------iie---", "-------e-i-e-",
    "-------i--ii-", "i-ieeeei-iiii", "-----------ii"};

SqlType makeDecimal(std::span<const int> arguments) {
    const int precision = arguments.empty() ? 18 : arguments[0];
    const int scale = arguments.size() < 2 ? 0 : arguments[1];
    if (precision < 1) throw sqlError(kInvalidLength, {std::to_string(precision)});
    if (precision > kMaxDecimal) throw sqlError(kPrecisionTooHigh, {std::to_string(precision)});
    if (scale > precision || scale < 0) throw sqlError(kScaleAbovePrecision);
    return decimalType(precision, scale);
}

SqlType asDecimal(const SqlType& type) {
    return type.id == TypeId::Decimal ? type : decimalType(precisionOf(type), facts(type.id).scale);
}

SqlType joinLengths(SqlType result, const SqlType& left, const SqlType& right) {
    const bool unbounded = left.length == SqlType::kMax || right.length == SqlType::kMax;
    result.length = unbounded ? SqlType::kMax : std::max(left.length, right.length);
    if (hasLength(result.id) && left.id != right.id) {  // char and varchar give varchar
        if (result.id == TypeId::NChar) result.id = TypeId::NVarChar;
        if (isNational(result.id) && result.length > kMaxNational) result.length = SqlType::kMax;
    }
    return result;
}

// Beyond 38 digits the scale is reduced.
SqlType joinDecimals(const SqlType& left, const SqlType& right) {
    const int whole = std::max(left.precision - left.scale, right.precision - right.scale);
    const int scale = std::min<int>(std::max(left.scale, right.scale), kMaxDecimal - whole);
    return decimalType(whole + scale, scale);
}

SqlType concatenation(const SqlType& left, const SqlType& right) {
    const bool national = isNational(left.id) || isNational(right.id);
    const bool unbounded = left.length <= 0 || right.length <= 0;
    const int length = std::min(left.length + right.length, national ? kMaxNational : kMaxBytes);
    const TypeId ofText = national ? TypeId::NVarChar : TypeId::VarChar;
    return {isBinary(left.id) ? TypeId::VarBinary : ofText, unbounded ? SqlType::kMax : length, 0, 0};
}

// Type of a product or quotient. Beyond 38 digits the scale is reduced, but not below 6.
SqlType reduced(int precision, int scale) {
    constexpr int kKeptScale = 6;
    const int room = kMaxDecimal - (precision - scale);
    return decimalType(std::min(precision, kMaxDecimal), std::min(scale, std::max(room, kKeptScale)));
}

SqlType decimalResult(BinaryOp op, const SqlType& left, const SqlType& right) {
    const int p1 = left.precision, s1 = left.scale, p2 = right.precision, s2 = right.scale;
    if (op == BinaryOp::Multiply) return reduced(p1 + p2 + 1, s1 + s2);
    if (op == BinaryOp::Divide) {
        const int scale = std::max(6, s1 + p2 + 1);
        return reduced(p1 - s1 + s2 + scale, scale);
    }
    const int scale = std::max(s1, s2);
    if (op == BinaryOp::Modulo) return decimalType(std::min(p1 - s1, p2 - s2) + scale, scale);
    const SqlType sum = joinDecimals(left, right);
    return decimalType(std::min(sum.precision + 1, kMaxDecimal), sum.scale);
}

constexpr std::string_view kOperatorNames[] = {"add",    "subtract", "multiply", "divide",
                                               "modulo", "'&'",      "'|'",      "'^'"};

}  // namespace

SqlType makeType(std::string_view name, std::span<const int> arguments, TypeUse use) {
    const std::string synonym = "," + lowerAscii(name) + ",";
    const auto* const found = std::ranges::find_if(kTypes, [&](const TypeFacts& each) {
        return sameWord(each.name, name) ||
               (name.find(',') == name.npos && each.synonyms.find(synonym) != name.npos);
    });
    const bool isKnown = found != std::end(kTypes);
    if (!isKnown && hasWord("geography geometry hierarchyid sql_variant", lowerAscii(name)))
        throw unsupported(lowerAscii(name) + " as a type");
    if (!isKnown) throw sqlError(use == TypeUse::Cast ? kNotASystemType : kUnknownType, {name});
    const auto id = static_cast<TypeId>(found - kTypes);
    if (sameWord(name, "sysname")) return nvarcharType(128);
    if (id == TypeId::Decimal) return makeDecimal(arguments);
    SqlType type = simpleType(id);
    if (!hasLength(id) && arguments.empty()) return type;
    const int given = arguments.empty() ? 0 : arguments[0];
    if (id == TypeId::Float) {
        if (given < 1 || given > 53) throw sqlError(kInvalidLength, {std::to_string(given)});
        return simpleType(given <= 24 ? TypeId::Real : TypeId::Float);
    }
    if (hasScale(id)) {
        if (given < 0 || given > 7) throw sqlError(kInvalidScale, {std::to_string(given)});
        type.scale = static_cast<std::uint8_t>(given);
        return type;
    }
    if (!hasLength(id)) throw sqlError(kTypeWithoutWidth, {name});
    type.length = !arguments.empty() ? given : use == TypeUse::Cast ? 30 : 1;
    const int most = isNational(id) ? kMaxNational : kMaxBytes;
    if (type.length < 1 && (isPadded(id) || type.length != SqlType::kMax))
        throw sqlError(kInvalidLength, {std::to_string(given)});
    if (given > most)
        throw sqlError(kSizeExceedsMaximum, {std::to_string(given), baseName(id), std::to_string(most)});
    return type;
}

std::string_view baseName(TypeId id) {
    return facts(id).name;
}

int systemId(TypeId id) {
    return facts(id).systemId;
}

std::string displayName(const SqlType& type) {
    std::string name(baseName(type.id));
    if (type.id == TypeId::Decimal)
        return name + "(" + std::to_string(type.precision) + "," + std::to_string(type.scale) + ")";
    if (hasScale(type.id)) return name + "(" + std::to_string(type.scale) + ")";
    if (!hasLength(type.id)) return name;
    return name + "(" + (type.length == SqlType::kMax ? "max" : std::to_string(type.length)) + ")";
}

std::int64_t encodeType(const SqlType& type) {
    const auto length = static_cast<std::int64_t>(static_cast<std::uint32_t>(type.length));
    return static_cast<std::int64_t>(type.id) | (std::int64_t{type.precision} << 8) |
           (std::int64_t{type.scale} << 16) | (length << 24);
}

SqlType decodeType(std::int64_t code) {
    const auto id = static_cast<TypeId>(std::min<std::int64_t>(code & 0xff, std::size(kTypes) - 1));
    return {id, static_cast<int>(code >> 24), static_cast<std::uint8_t>(code >> 8),
            static_cast<std::uint8_t>(code >> 16)};
}

ConversionRule conversionRule(TypeId from, TypeId to) {
    const auto place = [](TypeId id) { return kFamilyOrder.find(facts(id).family); };
    return ConversionRule{kConversions[place(from)][place(to)]};
}

void requireImplicit(const SqlType& from, const SqlType& to) {
    const ConversionRule rule = conversionRule(from.id, to.id);
    if (rule != ConversionRule::Implicit)
        throw sqlError(rule == ConversionRule::Never ? kOperandTypeClash : kNoImplicitConversion,
                       {baseName(from.id), baseName(to.id)});
}

SqlType varcharType(int length) {
    return {TypeId::VarChar, length > kMaxBytes ? SqlType::kMax : length, 0, 0};
}
SqlType nvarcharType(int length) {
    return {TypeId::NVarChar, length > kMaxNational ? SqlType::kMax : length, 0, 0};
}
SqlType decimalType(int precision, int scale) {
    return {TypeId::Decimal, 0, static_cast<std::uint8_t>(precision), static_cast<std::uint8_t>(scale)};
}
SqlType simpleType(TypeId id) {
    return {id, id == TypeId::RowVersion ? 8 : 0, static_cast<std::uint8_t>(id == TypeId::Decimal ? 18 : 0),
            static_cast<std::uint8_t>(facts(id).scale)};
}

int maxLength(const SqlType& type) {
    if (hasLength(type.id)) return type.length == SqlType::kMax ? -1 : type.length * facts(type.id).bytes;
    const int ofTime = type.scale <= 2 ? 3 : type.scale <= 4 ? 4 : 5;
    if (type.id == TypeId::Time) return ofTime;
    if (hasScale(type.id)) return ofTime + (type.id == TypeId::DateTime2 ? 3 : 5);  // date, offset
    if (type.id != TypeId::Decimal) return facts(type.id).bytes;
    return type.precision <= 9 ? 5 : type.precision <= 19 ? 9 : type.precision <= 28 ? 13 : 17;
}

int precisionOf(const SqlType& type) {
    return type.id == TypeId::Decimal ? type.precision : facts(type.id).precision;
}

SqlType commonType(const SqlType& left, const SqlType& right, std::string_view operatorName) {
    const bool leftWins = facts(left.id).precedence >= facts(right.id).precedence;
    const SqlType& high = leftWins ? left : right;
    const SqlType& low = leftWins ? right : left;
    const bool meet = conversionRule(low.id, high.id) == ConversionRule::Implicit;
    const bool mixedDates = isDateTime(low.id) && isDateTime(high.id) &&
                            (!meet || (low.id == TypeId::Time && isClassicDate(high.id)));
    if (!operatorName.empty() && (isLob(low.id) || isLob(high.id) || mixedDates))
        throw sqlError(kIncompatibleOperands, {baseName(left.id), baseName(right.id), operatorName});
    if (!meet) throw sqlError(kOperandTypeClash, {baseName(left.id), baseName(right.id)});
    if (high.id == TypeId::Decimal && isExact(low.id)) return joinDecimals(high, asDecimal(low));
    if ((isText(high.id) && isText(low.id)) || (isBinary(high.id) && isBinary(low.id)))
        return joinLengths(high, left, right);
    SqlType result = high;
    if (hasScale(high.id) && hasScale(low.id)) result.scale = std::max(left.scale, right.scale);
    return result;
}

SqlType operatorType(BinaryOp op, const SqlType& left, const SqlType& right) {
    const std::string_view name = kOperatorNames[static_cast<std::size_t>(op)];
    const SqlType high = commonType(left, right, name);
    const bool texts = isText(left.id) && isText(right.id);
    const bool blobs = isBinary(left.id) && isBinary(right.id);
    if (op == BinaryOp::Add && (texts || blobs)) return concatenation(left, right);
    // datetime and smalldatetime support + and - with a number of days; the newer types do not.
    const auto isDays = [](TypeId id) { return isClassicDate(id) || isNumber(id) || isText(id); };
    const bool isSum = op == BinaryOp::Add || op == BinaryOp::Subtract;
    if (isClassicDate(high.id) && isSum && isDays(left.id) && isDays(right.id)) return high;
    const bool bits = op >= BinaryOp::BitAnd;
    if (bits && high.id == TypeId::Bit) return high;
    if (!isNumber(high.id) || high.id == TypeId::Bit || isDateTime(left.id) || isDateTime(right.id) ||
        (bits && !isInteger(high.id)) || (op == BinaryOp::Modulo && isApproximate(high.id)))
        throw left.id == right.id
            ? sqlError(kInvalidOperandType, {baseName(left.id), name})
            : sqlError(kIncompatibleOperands, {baseName(left.id), baseName(right.id), name});
    if (high.id != TypeId::Decimal) return high;
    const auto operand = [&](const SqlType& type) { return isExact(type.id) ? asDecimal(type) : high; };
    return decimalResult(op, operand(left), operand(right));
}

}  // namespace tsql
