#include "FrameRateText.h"

#include "Numbers.h"

#include <array>
#include <cmath>
#include <numeric>

namespace {

constexpr int64_t kMaxRate = 1000;     ///< frames per second
constexpr int64_t kMaxTerm = 10000000; ///< of a fraction
constexpr size_t kMaxDecimals = 6;

/// Rates that are a whole number times 1000/1001.
constexpr std::array<int64_t, 5> kSlowedRates = {24, 30, 48, 60, 120};

std::optional<Rational> MakeRate(std::optional<int64_t> num, std::optional<int64_t> den) {
    if (!num || !den || *num < 1 || *den < 1 || *den > kMaxTerm || *num > kMaxTerm * kMaxRate)
        return std::nullopt;
    const int64_t common = std::gcd(*num, *den);
    const Rational rate{*num / common, *den / common};
    if (rate.num > kMaxTerm || rate.num > kMaxRate * rate.den) return std::nullopt;
    return rate;
}

/// The exact rate that a decimal number of `places` places is the rounded form of.
std::optional<Rational> SlowedRate(double value, size_t places) {
    if (places < 2) return std::nullopt;
    const double tolerance = 0.51 * std::pow(10.0, -static_cast<double>(places));
    for (const int64_t nominal : kSlowedRates) {
        const double exact = static_cast<double>(nominal) * 1000.0 / 1001.0;
        if (std::abs(value - exact) <= tolerance) return Rational{nominal * 1000, 1001};
    }
    return std::nullopt;
}

std::optional<Rational> ParseDecimal(std::string_view whole, std::string_view decimals) {
    if (decimals.empty() || decimals.size() > kMaxDecimals) return std::nullopt;
    const std::optional<int64_t> integer = ParseNumber(whole);
    const std::optional<int64_t> fraction = ParseNumber(decimals);
    if (!integer || !fraction || *integer > kMaxRate) return std::nullopt;
    const int64_t scale = std::llround(std::pow(10.0, static_cast<double>(decimals.size())));
    const int64_t scaled = *integer * scale + *fraction;
    const double value = static_cast<double>(scaled) / static_cast<double>(scale);
    if (const auto slowed = SlowedRate(value, decimals.size())) return slowed;
    return MakeRate(scaled, scale);
}

} // namespace

std::optional<Rational> ParseFrameRate(std::string_view text) {
    const size_t slash = text.find('/');
    if (slash != std::string_view::npos)
        return MakeRate(ParseNumber(text.substr(0, slash)), ParseNumber(text.substr(slash + 1)));
    const size_t point = text.find('.');
    if (point != std::string_view::npos) return ParseDecimal(text.substr(0, point), text.substr(point + 1));
    return MakeRate(ParseNumber(text), 1);
}

std::string FormatRational(const Rational& value) {
    return std::to_string(value.num) + "/" + std::to_string(value.den);
}
