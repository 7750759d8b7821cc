#include "types/Values.h"

#include <boost/algorithm/hex.hpp>
#include <charconv>
#include <cmath>
#include <limits>

#include "types/Text.h"

namespace tsql {

namespace {

// Name of a type in messages, where every decimal is "numeric".
std::string_view spoken(const SqlType& type) {
    return type.id == TypeId::Decimal ? "numeric" : baseName(type.id);
}

[[noreturn]] void throwOverflow(const SqlType& from, const SqlType& to) {
    if (from.scale == 0 && !isApproximate(from.id) && isInteger(to.id)) throwOverflow(to);
    const int textState = from.id == TypeId::Decimal ? 5 : 2, scaledState = isApproximate(from.id) ? 6 : 8;
    throw sqlError(kArithmeticOverflow, {spoken(from), spoken(to)}, isText(to.id) ? textState : scaledState);
}

[[noreturn]] void throwBadText(std::string_view text, const SqlType& from, const SqlType& to) {
    if (to.id == TypeId::BigInt || to.id == TypeId::Decimal || isApproximate(to.id))
        throw sqlError(kConversionError, {spoken(from), spoken(to)});
    if (isMoney(to.id)) throw sqlError(to.id == TypeId::Money ? kBadMoneyText : kBadSmallMoneyText);
    throw sqlError(kBadTextForType, {spoken(from), text, spoken(to)});
}

[[noreturn]] void throwNotConverted(const SqlType& from, const SqlType& to) {
    throw unsupported("the conversion of " + std::string(spoken(from)) + " to " + std::string(spoken(to)));
}

// 10^38, which exceeds every type, for more than 38 digits.
Int128 numberOf(std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    Int128 value = 0;
    for (const char c : digits.substr(0, kMostDigits)) value = value * 10 + (c - '0');
    return digits.size() > kMostDigits ? powerOfTen<Int128>(kMostDigits) : value;
}

// One conversion. Its functions are named after the family of the target type.
struct Converter {
    const CellView& cell;
    const SqlType& from;
    const SqlType& to;
    int style;
    bool isAssignment;

    Value run() const {
        const bool isHijri = style == 130 || style == 131;
        if (isHijri && isDateTime(from.id) != isDateTime(to.id))
            throw unsupported("the Hijri calendar (styles 130 and 131)");
        if (isExact(to.id)) return toExact();
        if (isApproximate(to.id)) return toFloat();
        if (isText(to.id)) return toText();
        if (isDateTime(to.id)) return toDateTime();
        if (to.id == TypeId::UniqueIdentifier)
            return isBinary(from.id) ? identifierFromBinary() : identifierFromText();
        return toBinary();
    }

    std::int64_t integer() const { return std::get<std::int64_t>(cell); }
    Int128 exact() const { return exactOf(cell); }
    double real() const { return std::get<double>(cell); }
    std::string_view text() const { return std::get<std::string_view>(cell); }
    Blob blob() const { return std::get<Blob>(cell); }

    // Integers are truncated, money and decimals rounded.
    Value toExact() const {
        if (isText(from.id)) return exactFromText();
        if (isBinary(from.id) && to.id != TypeId::Decimal) return integerFromBinary();
        if (isApproximate(from.id) && isInteger(to.id)) return integerFromFloat();
        if (!isExact(from.id)) return rangeChecked(rescaled(asReal(), to.scale));
        if (to.id == TypeId::Bit) return rangeChecked(exact());
        const bool isTruncated = isInteger(to.id) && !isMoney(from.id);
        return rangeChecked(
            rescaled(exact(), from.scale, to.scale, isTruncated ? Rounding::Truncate : Rounding::HalfAway));
    }

    Value rangeChecked(Int128 value) const {
        if (to.id == TypeId::Bit) return std::int64_t{value != 0};
        if (fits(value, to)) return exactCell(value, to);
        if (isText(from.id) && isInteger(to.id)) throwTextOverflow();
        if (isInteger(from.id) && to.id < TypeId::Int)
            throw sqlError(kOverflowOfValue, {spoken(to), std::to_string(integer())},
                           to.id == TypeId::TinyInt ? 2 : 1);
        throwOverflow(from, to);
    }

    // Digits; for money and decimals with at most one point, for money also with a currency sign and commas,
    // or these alone.
    Value exactFromText() const {
        constexpr std::u32string_view kCurrencySigns = U"$¢£¤¥€\\";
        std::string_view rest = trimmed(text());
        const bool isMoneyText = isMoney(to.id);
        if (to.id == TypeId::Bit && (sameText(rest, "true") || sameText(rest, "false")))
            return std::int64_t{sameText(rest, "true")};
        if (rest.empty() && to.id != TypeId::Decimal) return std::int64_t{0};
        bool negative = rest.starts_with('-');
        if (negative || rest.starts_with('+')) rest = trimLeft(rest.substr(1));
        std::string_view behindSign = rest;
        if (isMoneyText && !rest.empty() && kCurrencySigns.find(nextCharacter(behindSign)) != rest.npos)
            rest = trimLeft(behindSign);
        if (isMoneyText && rest.starts_with('-') && !negative) negative = true, rest.remove_prefix(1);
        const std::size_t point = isInteger(to.id) ? rest.size() : std::min(rest.find('.'), rest.size());
        std::string digits(rest.substr(0, point)), fraction(rest.substr(std::min(point + 1, rest.size())));
        if (isMoneyText) std::erase(digits, ',');
        const std::string all = digits + fraction;
        const bool isDigits = all.find_first_not_of("0123456789") == all.npos;
        if (!isDigits || (all.empty() && (to.id == TypeId::Bit || to.id == TypeId::Decimal)))
            throwBadText(text(), from, to);
        fraction.resize(std::max<std::size_t>(fraction.size(), to.scale + 1U), '0');
        const Int128 value = numberOf(digits.append(fraction, 0, to.scale)) + (fraction[to.scale] >= '5');
        return rangeChecked(negative ? -value : value);
    }

    [[noreturn]] void throwTextOverflow() const {
        if (to.id == TypeId::Int) throw sqlError(kOverflowOfInt, {spoken(from), text()});
        if (to.id == TypeId::BigInt) throwOverflow(to);
        throw sqlError(kOverflowOfSmallInteger,
                       {spoken(from), text(), to.id == TypeId::TinyInt ? "INT1" : "INT2"});
    }

    Value integerFromFloat() const {
        const double value = real();
        if (to.id == TypeId::Bit) return std::int64_t{value != 0};
        const bool isRepresentable = std::fabs(value) < 9.2233720368547748e18;
        if (!isRepresentable || !fits(static_cast<std::int64_t>(value), to)) throwFloatOverflow();
        return static_cast<std::int64_t>(value);
    }

    [[noreturn]] void throwFloatOverflow() const {
        if (to.id == TypeId::BigInt) throwOverflow(to);
        throw sqlError(kOverflowOfType, {spoken(to), std::to_string(real())},
                       isText(to.id) ? 2 : static_cast<int>(to.id));
    }

    Value integerFromBinary() const {
        std::uint64_t bits = 0;
        const Blob bytes = blob();
        const std::size_t width = static_cast<std::size_t>(maxLength(simpleType(to.id)));
        for (const std::byte b : bytes.substr(bytes.size() - std::min(bytes.size(), width)))
            bits = bits << 8 | std::to_integer<std::uint64_t>(b);
        if (to.id == TypeId::Bit) return std::int64_t{bits != 0};
        const std::size_t unused = to.id == TypeId::TinyInt ? 0 : 64 - 8 * width;
        return static_cast<std::int64_t>(bits << unused) >> unused;
    }

    double asReal() const {
        if (isText(from.id)) return floatFromText();
        if (isApproximate(from.id)) return real();
        if (isClassicDate(from.id)) {
            const std::chrono::duration<long double, days::period> number = fromStorage(text()).at - kDay1900;
            return static_cast<double>(number.count());
        }
        if (!isExact(from.id)) throwNotConverted(from, to);
        return static_cast<double>(static_cast<long double>(exact()) / powerOfTen<long double>(from.scale));
    }

    Value toFloat() const {
        const double value = asReal();
        if (to.id != TypeId::Real) return value;
        if (std::fabs(value) > static_cast<double>(std::numeric_limits<float>::max())) throwOverflow(to);
        return static_cast<double>(static_cast<float>(value));
    }

    double floatFromText() const {
        std::string digits = lowerAscii(trimmed(text()));
        if (digits.empty()) return 0;
        if (digits[0] == '+' && !digits.starts_with("+-")) digits.erase(0, 1);
        std::ranges::replace(digits, 'd', 'e');  // 1d3 is 1e3
        double value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error == std::errc::result_out_of_range) throwOverflow(from, to);
        if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value))
            throwBadText(text(), from, to);
        return value;
    }

    Value toText() const {
        std::string result = textInStyle();
        if (to.length <= 0) return result;  // text, xml, (max)
        const auto limit = static_cast<std::size_t>(to.length);
        const std::size_t count = characterCount(result);
        if (count > limit) return fitted(result, limit);
        if (isPadded(to.id)) result.append(limit - count, ' ');
        return result;
    }

    Value fitted(const std::string& result, std::size_t limit) const {
        if (from.id <= TypeId::Int && !isNational(to.id) && !isAssignment && from.id != TypeId::Bit)
            return std::string("*").append(to.id == TypeId::Char ? limit - 1 : 0, ' ');
        if (isApproximate(from.id) && !isNational(to.id)) throwFloatOverflow();
        if (isInteger(from.id) || isApproximate(from.id)) throwOverflow(to);
        if (from.id == TypeId::Decimal) throwOverflow(from, to);
        if (isMoney(from.id)) throw sqlError(kNoSpaceForMoney, {spoken(to)});
        if (from.id == TypeId::UniqueIdentifier)
            throw sqlError(kInsufficientSpace, {"result space to convert uniqueidentifier value to char"});
        const std::string_view kept = characters(result, 0, limit);
        if (isAssignment && trimRight(result).size() > kept.size()) throw sqlError(kTruncation);
        return std::string(kept);
    }

    std::string textInStyle() const {
        if (isDateTime(from.id)) return formatDateTime(fromStorage(text()), from, style, to);
        if (isMoney(from.id)) return moneyText();
        if (isApproximate(from.id)) return floatText();
        if (isBinary(from.id)) return binaryText();
        if (isExact(from.id)) return scaledText(exact(), from.scale);
        return std::string(text());
    }

    // Each byte is a character of varchar; each two bytes, in little-endian order, are one of nvarchar. With
    // a style they are hexadecimal digits, without those of an incomplete byte.
    std::string binaryText() const {
        const std::string_view bytes(reinterpret_cast<const char*>(blob().data()), blob().size());
        if (style > 2) throwNotConverted(from, to);
        if (style <= 0) return isNational(to.id) ? utf8FromUtf16(bytes) : utf8FromCodePage1252(bytes);
        const std::string digits = (style == 1 ? "0x" : "") + hexDigits(blob());
        return to.length > 0 ? digits.substr(0, static_cast<std::size_t>(to.length & ~1)) : digits;
    }

    std::string moneyText() const {
        if (style == 2 || style == 126) return scaledText(integer(), 4);
        std::string result = scaledText(rescaled(integer(), 4, 2, Rounding::HalfAway), 2);
        const std::size_t first = result[0] == '-' ? 1 : 0;
        for (std::size_t at = result.size() - 3; style == 1 && at > first + 3;)
            result.insert(at -= 3, 1, ',');
        return result;
    }

    // Six digits by default, three digits of exponent.
    std::string floatText() const {
        char buffer[64];
        const double value = real() == 0 ? 0.0 : real();
        constexpr int kDigits[] = {6, 7, 15, 16};  // for styles 0 to 3
        const int form = style != 126 ? style : from.id == TypeId::Real ? 1 : 2;
        const bool exponential = form >= 1 && form <= 3;
        const auto shape = exponential ? std::chars_format::scientific : std::chars_format::general;
        const int digits = kDigits[exponential ? form : 0];
        std::string result(buffer, std::to_chars(buffer, std::end(buffer), value, shape, digits).ptr);
        const auto exponent = result.find('e');
        if (exponent != result.npos && result.size() - exponent < 5) result.insert(exponent + 2, 1, '0');
        return result;
    }

    Value toDateTime() const {
        if (isText(from.id))
            return toStorage(parseDateTime(trimmed(text()), from, to, style), to, spoken(from));
        if (isNumber(from.id) && isClassicDate(to.id)) return dateTimeFromNumber();
        if (!isDateTime(from.id)) throwNotConverted(from, to);
        DateTime value = fromStorage(text());
        // A datetime counts 1/300 s. Its storage form shows milliseconds.
        if (from.id == TypeId::DateTime && hasScale(to.id))
            value.at = value.day() + Ticks(((value.time().count() / 10'000 * 3 + 5) / 10 * 100'000 + 1) / 3);
        return toStorage(value, to, spoken(from));
    }

    Value dateTimeFromNumber() const {
        constexpr double kNoDay = 4e6;
        const std::chrono::duration<double, days::period> number(std::clamp(asReal(), -kNoDay, kNoDay));
        const DateTime value{kDay1900 + std::chrono::duration_cast<Ticks>(number)};
        if (!isInRange(value, to)) throwOverflow(to);
        return toStorage(value, to);
    }

    Value identifierFromText() const {
        std::string_view rest = trimmed(text());
        if (!rest.empty() && rest[0] == '{') rest.remove_prefix(1);
        std::string result = toUpper(rest.substr(0, 36)), digits;
        for (std::size_t i = 0; i < result.size(); ++i)
            if (std::ranges::find(kDashes, i) == std::end(kDashes) || result[i] != '-') digits += result[i];
        if (result.size() != 36 || digits.size() != 32 || !parseHex(digits))
            throw sqlError(kBadUniqueIdentifier);
        return result;
    }

    static constexpr std::size_t kDashes[] = {8, 13, 18, 23};
    // The first three groups are little-endian.
    static Bytes reordered(Blob identifier) {
        Bytes result(identifier.substr(0, 16));
        for (const auto& [first, end] : {std::pair(0, 4), {4, 6}, {6, 8}})
            std::reverse(result.begin() + first, result.begin() + end);
        return result;
    }

    Value identifierFromBinary() const {
        if (blob().size() < 16)
            throw sqlError(kInsufficientSpace, {"data to convert a binary value to uniqueidentifier"});
        std::string result = hexDigits(reordered(blob()));
        for (const std::size_t dash : kDashes) result.insert(dash, 1, '-');
        return result;
    }

    Value toBinary() const {
        Bytes bytes = bytesOfValue();
        if (to.length <= 0) return bytes;
        const auto limit = static_cast<std::size_t>(to.length);
        const bool number = isNumber(from.id);
        if (bytes.size() > limit && isAssignment && !number) throw sqlError(kTruncation);
        // Numbers are truncated on the left, other values on the right.
        if (bytes.size() > limit) bytes = bytes.substr(number ? bytes.size() - limit : 0, limit);
        if (isPadded(to.id) && bytes.size() < limit)
            bytes.insert(number ? 0 : bytes.size(), limit - bytes.size(), std::byte{0});
        return bytes;
    }

    Bytes bytesOfValue() const {
        if (isBinary(from.id)) return Bytes(blob());
        if (isInteger(from.id) || isMoney(from.id)) return bytesOfInteger();
        if (isText(from.id)) return style > 0 ? bytesOfHex() : bytesOfText();
        if (from.id == TypeId::UniqueIdentifier) return bytesOfIdentifier();
        throwNotConverted(from, to);
    }

    Bytes bytesOfInteger() const {
        Bytes bytes;
        for (int shift = maxLength(from) * 8 - 8; shift >= 0; shift -= 8)
            bytes += static_cast<std::byte>(integer() >> shift);
        return bytes;
    }

    Bytes bytesOfText() const {
        std::string wire;
        isNational(from.id) ? appendUtf16(wire, text()) : appendCodePage1252(wire, text());
        return {reinterpret_cast<const std::byte*>(wire.data()), wire.size()};
    }

    Bytes bytesOfHex() const {
        std::string_view digits = trimmed(text());
        const bool prefixed = digits.size() >= 2 && digits[0] == '0' && (digits[1] | 32) == 'x';
        if (prefixed && style == 1) digits.remove_prefix(2);
        if (auto parsed = parseHex(digits); parsed && style == (prefixed ? 1 : 2)) return *parsed;
        throw sqlError(kConversionError, {spoken(from), spoken(to)});
    }

    Bytes bytesOfIdentifier() const {
        std::string digits(text());
        std::erase(digits, '-');
        return reordered(parseHex(digits).value_or(Bytes(16, std::byte{0})));
    }
};

}  // namespace

void throwOverflow(const SqlType& type) {
    throw sqlError(kArithmeticOverflow, {"expression", spoken(type)});
}

std::string hexDigits(std::span<const std::byte> bytes) {
    std::string digits;
    boost::algorithm::hex(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                          std::back_inserter(digits));
    return digits;
}

std::optional<Bytes> parseHex(std::string_view digits) {
    Bytes bytes(digits.size() / 2, std::byte{});
    try {
        boost::algorithm::unhex(digits, reinterpret_cast<char*>(bytes.data()));
        return bytes;
    } catch (const boost::algorithm::hex_decode_error&) {
        return std::nullopt;
    }
}

CellView viewOf(const Value& value) {
    return std::visit([](const auto& held) -> CellView { return held; }, value);
}

Value ownedValue(const CellView& view) {
    if (const auto* text = std::get_if<std::string_view>(&view)) return std::string(*text);
    if (const auto* blob = std::get_if<Blob>(&view)) return Bytes(*blob);
    if (const auto* integer = std::get_if<std::int64_t>(&view)) return *integer;
    if (const auto* real = std::get_if<double>(&view)) return *real;
    return Null{};
}

Value convertValue(const CellView& value, const SqlType& from, const SqlType& to, int style,
                   Conversion kind) {
    if (isNull(value)) return Null{};
    if (conversionRule(from.id, to.id) == ConversionRule::Never)
        throw sqlError(kNoExplicitConversion, {spoken(from), spoken(to)});
    try {
        return Converter{value, from, to, style, kind == Conversion::Assign}.run();
    } catch (const SqlError& error) {
        if (kind != Conversion::Try || error.number == kUserDefined) throw;
        return Null{};
    } catch (const std::bad_variant_access&) {
        throw sqlError(kConversionError, {spoken(from), spoken(to)});
    }
}

std::string textOf(const CellView& value, const SqlType& type) {
    if (isNull(value)) return {};
    return std::get<std::string>(convertValue(
        value, type, isNational(type.id) ? nvarcharType(SqlType::kMax) : varcharType(SqlType::kMax)));
}

}  // namespace tsql
