// Numbers of the host: one object per value, exact and decimal arithmetic, conversion to doubles.

#include "values/numbers.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "mathematics/evaluation.hpp"
#include "state_test.hpp"
#include "values/objects.hpp"
#include "values/small_decimal.hpp"
#include "values/text.hpp"

namespace vexel {
namespace {

class CoreNumbersTest : public StateTest {
 protected:
  // A number from "12", "-1/3", "1.5e400", "inf", "-inf", "nan", "2+3i".
  ALGEB number(std::string_view s) {
    if (const auto plus = s.find('+', 1); s.ends_with('i')) {
      ALGEB re = number(s.substr(0, plus));
      return newComplex(state, re, number(s.substr(plus + 1, s.size() - plus - 2)));
    }
    if (s.starts_with('-')) {
      return negate(state, number(s.substr(1)));
    }
    if (const auto slash = s.find('/'); slash != s.npos) {
      ALGEB top = number(s.substr(0, slash));
      return divide(state, top, number(s.substr(slash + 1)));
    }
    return s == "inf" ? state.infinity : s == "nan" ? state.undefined : numberFromText(state, s);
  }

  std::string show(ALGEB x) { return sourceText(state, x); }
};

TEST_F(CoreNumbersTest, LiteralsPrintAsTheShortestTextThatReadsBack) {
  static constexpr struct {
    const char *literal, *printed;
  } kCases[] = {
      {"0", "0"},
      {"4611686018427387903", "4611686018427387903"},  // the largest immediate integer
      {"4611686018427387904", "4611686018427387904"},
      {"123456789012345678901234567890", "123456789012345678901234567890"},
      {"2.", "2.0"},
      {".5", "0.5"},
      {"0.10", "0.1"},
      {"1e-3", "0.001"},
      {"1e-5", "1e-05"},
      {"100000.0", "100000.0"},
      {"123456789012345.0", "123456789012345.0"},
      {"1e15", "1000000000000000.0"},
      {"1e16", "1e+16"},
      {"1e+20", "1e+20"},
      {"1.5e400", "1.5e+400"},
      {"5e-324", "5e-324"},
      {"4.9406564584124654e-324", "4.9406564584124654e-324"},  // the same double, another decimal
      {"1e-400", "1e-400"},
      {"1.7976931348623157e308", "1.7976931348623157e+308"},
      {"0.1000000000000000055511151231257827", "0.1000000000000000055511151231257827"},
      {"12345678901234567890.5", "12345678901234567890.5"},
      {"00012.500", "12.5"},
      {"0.0e99", "0.0"},
  };
  for (const auto& [literal, printed] : kCases) {
    ALGEB x = numberFromText(state, literal);
    ASSERT_NE(x, nullptr) << literal;
    EXPECT_EQ(show(x), printed) << literal;
    EXPECT_EQ(numberFromText(state, printed), x) << printed;
  }
  for (const char* bad : {"", ".", "e5", "1e", "1.5x", "1..2", "0x10", "1e+-5"}) {
    EXPECT_EQ(numberFromText(state, bad), nullptr) << bad;
  }
}

TEST_F(CoreNumbersTest, EqualValuesAreOneObject) {
  EXPECT_EQ(newFloat(state, 0.1), number("0.1"));
  EXPECT_EQ(newFloat(state, 0.1), number("0.10e0"));
  EXPECT_EQ(newFloat(state, std::nan("7")), state.undefined);
  EXPECT_EQ(newFloat(state, std::numeric_limits<double>::infinity()), state.infinity);
  EXPECT_NE(newFloat(state, 0.0), newFloat(state, -0.0));
  EXPECT_NE(newFloat(state, 2.0), number("2"));
  EXPECT_EQ(number("6/4"), number("3/2"));
  EXPECT_EQ(number("8/4"), number("2"));
  EXPECT_EQ(add(state, number("99999999999999999999"), number("1")),
            number("100000000000000000000"));
  EXPECT_EQ(newInteger(state, std::numeric_limits<std::int64_t>::min()),
            number("-9223372036854775808"));
  EXPECT_EQ(number("1+2i"), number("1+2i"));
  EXPECT_EQ(string(state, "abcdefgh"), string(state, "abcdefgh"));
  EXPECT_EQ(name(state, "abcdefgh"), name(state, "abcdefgh"));
}

TEST_F(CoreNumbersTest, DoublesKeepAllTheirBits) {
  std::uint64_t bits = 0x9E3779B97F4A7C15U;
  for (int i = 0; i < 20000; ++i) {
    bits = bits * 6364136223846793005U + 1442695040888963407U;
    const double d = std::bit_cast<double>(bits);
    if (!std::isfinite(d)) {
      continue;
    }
    ALGEB x = newFloat(state, d);
    ASSERT_EQ(toDouble(state, x), d);
    // The decimal of the double is the double.
    if (i % 50 == 0) {
      ASSERT_EQ(roundToDigits(state, x, 17), x);
      ASSERT_EQ(number(doubleText(d)), x);
    }
  }
}

TEST_F(CoreNumbersTest, Arithmetic) {
  static constexpr struct {
    const char* a;
    char op;
    const char *b, *result;
  } kCases[] = {
      {"1", '/', "3", "1/3"},
      {"1/3", '+', "1/6", "1/2"},
      {"1/3", '-', "1/3", "0"},
      {"4611686018427387903", '+', "1", "4611686018427387904"},
      {"-4611686018427387904", '-', "1", "-4611686018427387905"},
      {"9223372036854775807", '*', "9223372036854775807", "85070591730234615847396907784232501249"},
      {"0.1", '+', "0.2", "0.3"},  // 15 decimal digits
      {"1", '/', "3.0", "0.333333333333333"},
      {"2", '/', "3.0", "0.666666666666667"},
      {"2/3", '*', "1.0", "0.666666666666667"},
      {"1.0", '+', "1e-400", "1.0"},
      {"1e400", '*', "1e-400", "1.0"},
      {"1e400", '+', "-1e400", "0.0"},
      {"1.00000000000001", '-', "1e-300", "1.00000000000001"},
      {"1.00000000000000", '-', "6e-16", "0.999999999999999"},
      {"100000000000000.5", '+', "0", "100000000000000.0"},  // a tie goes to even
      {"100000000000001.5", '+', "0", "100000000000002.0"},
      {"100000000000000.5", '+', "1e-30", "100000000000001.0"},  // no tie after all
      {"2e200", '*', "5e200", "1e+401"},  // trailing zeros of a product that is no double
      {"2e-200", '*', "-5e-200", "-1e-399"},
      {"1e-200", '/', "2e200", "5e-401"},
      {"1/3", '-', "0.33333333333333333333333333333333", "3.33333333333333e-33"},
      {"1e-400", '-', "1/3", "-0.333333333333333"},
      {"1.5", '*', "1000000000000001/3", "500000000000000.0"},  // a tie
      {"0.5", '/', "3/3000000000000003", "500000000000000.0"},
      {"1.0", '/', "0.0", "Float(infinity)"},
      {"-1", '/', "0.0", "-Float(infinity)"},
      {"1.0", '/', "-0.0", "-Float(infinity)"},
      {"0.0", '/', "0.0", "Float(undefined)"},
      {"inf", '-', "inf", "Float(undefined)"},
      {"inf", '+', "1e999", "Float(infinity)"},
      {"1e999", '*', "-inf", "-Float(infinity)"},
      {"1e999", '/', "inf", "0.0"},
      {"nan", '+', "1", "Float(undefined)"},
      {"0", '*', "inf", "Float(undefined)"},
      {"2+3i", '*', "2+-3i", "13"},
      {"2+3i", '+', "1.5", "3.5 + 3*I"},
      {"1", '/', "0+1i", "-I"},
      {"2", '^', "100", "1267650600228229401496703205376"},
      {"2/3", '^', "-3", "27/8"},
      {"-1", '^', "123456789012345678901", "-1"},
      {"0", '^', "0", "1"},
      {"1.1", '^', "10", "2.5937424601"},
      {"4e20", '^', "-11", "2.38418579101562e-227"},  // a tie: 5^22 has sixteen digits
      {"-2e-20", '^', "-3", "-1.25e+59"},
      {"1.0000000000000010000000000000000000000000000001", '^', "5", "1.00000000000001"},
      {"1.00000000000000000000000000000000000000000000000001", '^',
       "100000000000000000000000000000000000000000000000000", "2.71828182845905"},
      {"10.0", '^', "400", "1e+400"},
      {"2.0", '^', "-1", "0.5"},
      {"0.0", '^', "-1", "Float(infinity)"},
      {"0+1i", '^', "3", "-I"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.a) + " " + c.op + " " + c.b);
    ALGEB a = number(c.a);
    ALGEB b = number(c.b);
    ALGEB r = c.op == '+'   ? add(state, a, b)
              : c.op == '-' ? subtract(state, a, b)
              : c.op == '*' ? multiply(state, a, b)
              : c.op == '/' ? divide(state, a, b)
                            : integerPower(state, a, b);
    EXPECT_EQ(show(r), c.result);
  }
}

// 9999999999999999 lies between two doubles.
TEST_F(CoreNumbersTest, TrailingZerosOfASumThatIsNoDouble) {
  setNameValue(state, name(state, "Digits"), immediate(17));
  EXPECT_EQ(show(subtract(state, number("1e16"), number("0.96"))), "9999999999999999.0");
}

// Arithmetic of decimals of up to 18 digits goes a short way; with 400 digits it goes the long one,
// and rounding that gives the same but for double rounding, which such operands cannot cause.
TEST_F(CoreNumbersTest, ShortAndLongArithmeticAgree) {
  ALGEB digits = name(state, "Digits");
  std::uint64_t bits = 7;
  const auto next = [&] { return bits = bits * 6364136223846793005U + 1442695040888963407U; };
  const auto draw = [&] {
    const auto size = static_cast<std::int64_t>(std::pow(10.0, (next() >> 33) % 19));
    const auto exponent = static_cast<std::int64_t>((next() >> 33) % 31) - 20;
    const auto mantissa = static_cast<std::int64_t>(next()) % size;
    return newFloat(state, mantissa == 0 ? 1 : mantissa, exponent);
  };
  const auto cube = [](State& s, ALGEB x, ALGEB) { return integerPower(s, x, immediate(3)); };
  const auto high = [](State& s, ALGEB x, ALGEB y) {
    return integerPower(s, x, immediate(1 + std::abs(sign(y)) + (y == x ? 0 : 14)));
  };
  using Operation = std::function<ALGEB(State&, ALGEB, ALGEB)>;
  for (const Operation& operation : {Operation(&add), Operation(&subtract), Operation(&multiply),
                                     Operation(&divide), Operation(cube), Operation(high)}) {
    for (int i = 0; i < 2000; ++i) {
      const ALGEB a = draw();
      const ALGEB b = i % 8 == 0 ? add(state, a, draw()) : draw();
      const int kept = std::array{15, 18, 17, 16, 4}[static_cast<std::size_t>(i % 5)];
      setNameValue(state, digits, immediate(400));
      const ALGEB exact = isZero(b) ? a : operation(state, a, b);
      setNameValue(state, digits, immediate(kept));
      ASSERT_EQ(isZero(b) ? roundToDigits(state, a, kept) : operation(state, a, b),
                roundToDigits(state, exact, kept))
          << show(a) << " " << show(b) << " to " << kept;
    }
  }
}

TEST_F(CoreNumbersTest, DecimalsOfDoublesAreTheShortest) {
  std::uint64_t bits = 3;
  for (int i = 0; i < 100'000; ++i) {
    bits = bits * 6364136223846793005U + 1442695040888963407U;
    const auto size = static_cast<std::int64_t>(std::pow(10.0, 1 + i % 17));
    const std::string drawn = std::to_string(static_cast<std::int64_t>(bits >> 2) % size) + "e" +
                              std::to_string(i / 17 % 60 - 40);
    const double d = std::strtod(drawn.c_str(), nullptr);
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, d, std::chars_format::scientific);
    const std::string shortest(text, end.ptr);
    const SmallDecimal decimal = shortestDecimal(d);
    const std::string mantissa = std::to_string(static_cast<std::int64_t>(decimal.mantissa));
    ASSERT_EQ(std::strtod((mantissa + "e" + std::to_string(decimal.exponent)).c_str(), nullptr), d);
    const auto digitsOf = [](const std::string& s) {
      return std::count_if(s.begin(), std::find(s.begin(), s.end(), 'e'),
                           [](char c) { return c >= '0' && c <= '9'; });
    };
    ASSERT_EQ(digitsOf(mantissa), digitsOf(shortest)) << drawn;
  }
}

// Against 64-bit integers, which are an independent arithmetic.
TEST_F(CoreNumbersTest, FloatSumsOfFifteenDigitsRoundLikeIntegers) {
  std::uint64_t bits = 1;
  for (int i = 0; i < 2000; ++i) {
    bits = bits * 6364136223846793005U + 1442695040888963407U;
    const auto a = static_cast<std::int64_t>(bits >> 20) % 100'000'000'000'000;
    const auto b = static_cast<std::int64_t>(bits >> 13) % 100'000'000'000'000;
    ALGEB x = divide(state, newInteger(state, a), number("1e7"));
    ALGEB y = divide(state, newInteger(state, b), number("1e7"));
    ALGEB sum = multiply(state, add(state, x, y), number("1e7"));
    ASSERT_TRUE(equal(state, sum, newInteger(state, a + b))) << a << " " << b;
  }
}

TEST_F(CoreNumbersTest, OrderIsExactAcrossKinds) {
  // Ascending; equal neighbours are marked by '='.
  static constexpr const char* kAscending[] = {"-inf",
                                               "-1e999",
                                               "-9223372036854775809",
                                               "-9223372036854775808",
                                               "-1/3",
                                               "-1e-999",
                                               "0",
                                               "=0.0",
                                               "=-0.0",
                                               "1e-999",
                                               "1/10",
                                               "=0.1",
                                               "0.1000000000000000055",
                                               "1/3",
                                               "0.33333333333333333334",
                                               "9007199254740992",
                                               "9007199254740993",
                                               "=9007199254740993.0",
                                               "1e30",
                                               "=1000000000000000000000000000000",
                                               "1000000000000000000000000000001",
                                               "1e999",
                                               "inf"};
  for (std::size_t i = 1; i < std::size(kAscending); ++i) {
    std::string_view upper = kAscending[i];
    std::string_view lower = kAscending[i - 1];
    const bool same = upper.starts_with('=');
    upper.remove_prefix(same ? 1 : 0);
    lower.remove_prefix(lower.starts_with('=') ? 1 : 0);
    SCOPED_TRACE(std::string(lower) + " and " + std::string(upper));
    ALGEB a = number(lower);
    ALGEB b = number(upper);
    EXPECT_EQ(compare(state, a, b),
              same ? std::partial_ordering::equivalent : std::partial_ordering::less);
    EXPECT_EQ(compare(state, b, a),
              same ? std::partial_ordering::equivalent : std::partial_ordering::greater);
  }
  EXPECT_EQ(compare(state, state.undefined, state.undefined), std::partial_ordering::unordered);
}

TEST_F(CoreNumbersTest, ConversionToDoubleRoundsOnce) {
  static constexpr struct {
    const char* x;
    double d;
  } kCases[] = {
      {"9007199254740993", 9007199254740992.0},  // ties to even
      {"9007199254740995", 9007199254740996.0},
      {"9007199254740993.0000000000000000001", 9007199254740994.0},
      {"18446744073709551617", 18446744073709551616.0},
      {"1/3", 1.0 / 3.0},
      {"-2/3", -2.0 / 3.0},
      {"1e400", std::numeric_limits<double>::infinity()},
      {"-1e400", -std::numeric_limits<double>::infinity()},
      {"1e-400", 0.0},
      {"2.4703282292062327e-324", 0.0},                       // just below half the least double
      {"2.4703282292062328e-324", 5e-324},                    // just above
      {"1.7976931348623158079e308", 1.7976931348623157e308},  // rounds down to the largest
      {"1.7976931348623158080e308", std::numeric_limits<double>::infinity()},
  };
  for (const auto& [x, d] : kCases) {
    EXPECT_EQ(toDouble(state, number(x)), d) << x;
  }
  // A rational in the subnormal range: 3/2^1075 is one and a half of the least double; to even: 2.
  ALGEB tiny = divide(state, immediate(3), integerPower(state, immediate(2), immediate(1075)));
  EXPECT_EQ(toDouble(state, tiny), 1e-323);
  ALGEB huge = integerPower(state, immediate(10), immediate(400));
  EXPECT_EQ(toDouble(state, huge), std::numeric_limits<double>::infinity());
  EXPECT_EQ(toDouble(state, divide(state, huge, add(state, huge, immediate(1)))), 1.0);
}

TEST_F(CoreNumbersTest, RoundingToDigitsAndToIntegers) {
  static constexpr struct {
    const char* x;
    int digits;
    const char* result;
  } kRounded[] = {
      {"2/3", 5, "0.66667"},   {"1/7", 30, "0.142857142857142857142857142857"},
      {"2.5", 1, "2.0"},       {"3.5", 1, "4.0"},
      {"999.96", 4, "1000.0"}, {"123456", 2, "120000.0"},
      {"0.1", 30, "0.1"},      {"1+2/3i", 3, "1.0 + 0.667*I"},
      {"-0.0", 5, "-0.0"},     {"inf", 5, "Float(infinity)"},
  };
  for (const auto& [x, digits, result] : kRounded) {
    EXPECT_EQ(show(roundToDigits(state, number(x), digits)), result) << x;
  }
  static constexpr struct {
    const char* x;
    const char *floor, *ceiling, *nearest, *truncate;
  } kWhole[] = {
      {"5/2", "2", "3", "3", "2"},
      {"-5/2", "-3", "-2", "-3", "-2"},
      {"2.4", "2", "3", "2", "2"},
      {"-2.6", "-3", "-2", "-3", "-2"},
      {"1e-300", "0", "1", "0", "0"},
      {"-1e-300", "-1", "0", "0", "0"},
      {"1e20", "100000000000000000000", "100000000000000000000", "100000000000000000000",
       "100000000000000000000"},
      {"7", "7", "7", "7", "7"},
      {"0.5", "0", "1", "1", "0"},
  };
  for (const auto& c : kWhole) {
    ALGEB x = number(c.x);
    EXPECT_EQ(show(toInteger(state, x, Rounding::floor)), c.floor) << c.x;
    EXPECT_EQ(show(toInteger(state, x, Rounding::ceiling)), c.ceiling) << c.x;
    EXPECT_EQ(show(toInteger(state, x, Rounding::nearest)), c.nearest) << c.x;
    EXPECT_EQ(show(toInteger(state, x, Rounding::truncate)), c.truncate) << c.x;
  }
}

// Sizes that would end the process inside the big-number libraries are host errors.
TEST_F(CoreNumbersTest, ImpossibleSizesRaise) {
  ALGEB two = immediate(2);
  ALGEB big = number("1000000000000");
  EXPECT_EQ(error([&] { integerPower(state, two, big); }), "integer too large");
  EXPECT_EQ(error([&] { integerPower(state, two, number("99999999999999999999")); }),
            "integer too large");
  EXPECT_EQ(error([&] { integerPower(state, number("1/3"), negate(state, big)); }),
            "integer too large");
  EXPECT_EQ(error([&] { toInteger(state, number("1e299999999"), Rounding::floor); }),
            "integer too large");
  EXPECT_EQ(error([&] { numberFromText(state, "1e99999999999999999999"); }),
            "exponent of a float out of range");
  EXPECT_EQ(error([&] { multiply(state, number("1e299999999"), number("1e299999999")); }),
            "exponent of a float out of range");
  EXPECT_EQ(error([&] { roundToDigits(state, two, 0); }),
            "number of digits out of range, received 0");
  EXPECT_EQ(error([&] { divide(state, two, immediate(0)); }), "division by zero");
  EXPECT_EQ(error([&] { add(state, two, state.null); }), "a number expected, received NULL");
  EXPECT_EQ(show(add(state, number("1e299999999"), number("1e-299999999"))), "1e+299999999");
}

}  // namespace
}  // namespace vexel
