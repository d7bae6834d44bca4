// Printing objects.

#include "values/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/decimal.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {
namespace {

// Digits with a point, or an exponent outside [-4, fixedLimit); leading is the first digit's.
std::string layOut(std::string_view digits, std::int64_t leading, std::int64_t fixedLimit) {
  std::string out;
  const auto count = static_cast<std::int64_t>(digits.size());
  if (leading < -4 || leading >= fixedLimit) {
    out += digits[0];
    if (count > 1) {
      out += '.';
      out += digits.substr(1);
    }
    out += leading < 0 ? "e-" : "e+";
    if (std::abs(leading) < 10) {
      out += '0';
    }
    return out += std::to_string(std::abs(leading));
  }
  if (leading < 0) {
    out = "0.";
    out.append(static_cast<std::size_t>(-leading - 1), '0');
    out += digits;
    return out;
  }
  if (leading + 1 >= count) {
    out = digits;
    out.append(static_cast<std::size_t>(leading + 1 - count), '0');
    return out + ".0";
  }
  out = digits.substr(0, static_cast<std::size_t>(leading + 1));
  out += '.';
  out += digits.substr(static_cast<std::size_t>(leading + 1));
  return out;
}

constexpr std::int64_t kFixedLimit = 16;

// How tightly an operand binds; anything looser than its place asks for gets parentheses.
enum Level { kSequence, kRelation, kRange, kSum, kProduct, kPower, kAtom };

class Printer {
 public:
  Printer(State& state, std::string& out, const TextOptions& options)
      : state_(state), out_(out), options_(options), start_(out.size()) {}

  void print(ALGEB x, Level place) {
    if (tooLong()) {
      return;
    }
    constexpr int kDeepest = 400;
    if (depth_ == kDeepest) {
      if (options_.raiseTooDeep) {
        raise(state_, "nested too deeply to print");
      }
      out_ += "...";
      return;
    }
    ++depth_;
    const bool enclosed = levelOf(x) < place;
    out_ += enclosed ? "(" : "";
    printBare(x);
    out_ += enclosed ? ")" : "";
    --depth_;
  }

 private:
  // Cuts off texts that outgrow their limit, or memory.
  bool tooLong() {
    constexpr std::size_t kLongest = std::size_t{1} << 28;
    lookAtInterrupt();
    const std::size_t written = out_.size() - start_;
    if (written > kLongest) {
      raise(state_, "too long to print");
    }
    if (written <= options_.maxLength) {
      return false;
    }
    if (!cut_) {
      out_ += "...";
      cut_ = true;
    }
    return true;
  }

  Level levelOf(ALGEB x) const {
    if (x == nullptr) {
      return kAtom;
    }
    if (isReal(x)) {
      return sign(x) < 0 || (isDoubleFloat(x) && std::signbit(doubleOf(x))) ? kSum
             : isRational(x)                                                ? kProduct
                                                                            : kAtom;
    }
    switch (tag(x)) {
      case Tag::sequence:
        return length(x) == 1 ? kAtom : kSequence;
      case Tag::procedure:
        return kSequence;
      case Tag::equation:
      case Tag::less:
      case Tag::lessEqual:
      case Tag::unequal:
        return kRelation;
      case Tag::range:
        return kRange;
      case Tag::complex:
        return operand(x, 1) != immediate(0)   ? kSum
               : operand(x, 2) == immediate(1) ? kAtom  // I
               : sign(operand(x, 2)) > 0       ? kProduct
                                               : kSum;
      case Tag::sum:
        return kSum;
      case Tag::product:
        return startsNegative(x) ? kSum : kProduct;
      case Tag::power:
        return kPower;
      default:
        return kAtom;
    }
  }

  static bool startsNegative(ALGEB x) {
    if (isReal(x)) {
      return sign(x) < 0;
    }
    return is(x, Tag::product) && isReal(operand(x, 1)) && sign(operand(x, 1)) < 0;
  }

  void printBare(ALGEB x) {
    if (x == nullptr) {
      out_ += "NULL";
      return;
    }
    if (isInteger(x)) {
      printInteger(x);
      return;
    }
    switch (tag(x)) {
      case Tag::rational:
        printInteger(operand(x, 1));
        out_ += '/';
        printInteger(operand(x, 2));
        return;
      case Tag::softwareFloat:
        out_ += floatText(x);
        return;
      case Tag::complex:
        printComplex(x);
        return;
      case Tag::string:
        printQuoted(text(x));
        return;
      case Tag::name:
        out_ += text(x);
        return;
      case Tag::boolean:
        out_ += x == state_.trueValue ? "true" : "false";
        return;
      case Tag::list:
        out_ += '[';
        printElements(x, 1, kRelation, true);
        out_ += ']';
        return;
      case Tag::sequence:
        length(x) == 1 ? void(out_ += "NULL") : printElements(x, 1, kRelation, true);
        return;
      case Tag::sum:
        printSum(x);
        return;
      case Tag::product:
        printProduct(x);
        return;
      case Tag::power:
        print(operand(x, 1), kAtom);
        out_ += '^';
        print(operand(x, 2), kAtom);
        return;
      case Tag::application:
        printApplication(x);
        return;
      case Tag::equation:
      case Tag::less:
      case Tag::lessEqual:
      case Tag::unequal:
      case Tag::range:
        printPair(x);
        return;
      case Tag::table:
        printTable(x);
        return;
      case Tag::array:
        printArray(x);
        return;
      case Tag::date:
      case Tag::pointer:
        printMade(x);
        return;
      case Tag::procedure:
      case Tag::function:
      case Tag::foreign:
        foreign(x)->print(state_, out_);
        tooLong();
        return;
      default:
        out_ += "memory";
    }
  }

  void printInteger(ALGEB x) {
    if (isImmediate(x)) {
      out_ += std::to_string(immediateValue(x));
      return;
    }
    const IntegerView view(x);
    if (mpz_sizeinbase(view.get(), 10) > options_.maxLength) {
      out_ += "(an integer of about " + std::to_string(mpz_sizeinbase(view.get(), 10)) + " digits)";
      return;
    }
    std::string digits(mpz_sizeinbase(view.get(), 10) + 2, '\0');
    mpz_get_str(digits.data(), 10, view.get());
    out_ += digits.c_str();
  }

  void printComplex(ALGEB x) {
    ALGEB re = operand(x, 1);
    ALGEB im = operand(x, 2);
    const bool imaginaryOnly = re == immediate(0);
    if (!imaginaryOnly) {
      print(re, kSum);
    }
    std::string part;
    Printer inner(state_, part, options_);
    inner.print(im, isExact(im) ? kRange : kSum);
    const bool negative = part.starts_with('-');
    out_ += imaginaryOnly ? (negative ? "-" : "") : negative ? " - " : " + ";
    part.erase(0, negative ? 1 : 0);
    if (part != "1") {
      out_ += part;
      out_ += '*';
    }
    out_ += 'I';
  }

  void printQuoted(std::string_view s) {
    const bool whole = s.size() <= options_.maxLength;
    s = s.substr(0, options_.maxLength);
    out_ += '"';
    for (char c : s) {
      switch (c) {
        case '"':
          out_ += "\\\"";
          break;
        case '\\':
          out_ += "\\\\";
          break;
        case '\n':
          out_ += "\\n";
          break;
        case '\t':
          out_ += "\\t";
          break;
        default:
          out_ += c;
      }
    }
    out_ += whole ? "\"" : "...\"";
  }

  // Operands of x from the given one on, with commas; shortened where elements are.
  void printElements(ALGEB x, std::size_t from, Level place, bool shortened) {
    const std::size_t limit = shortened ? options_.maxElements : static_cast<std::size_t>(-1);
    for (std::size_t i = from; i < length(x); ++i) {
      out_ += i > from ? ", " : "";
      if (tooLong()) {
        return;
      }
      if (i - from >= limit) {
        printRest(length(x) - from);
        return;
      }
      print(operand(x, i), place);
    }
  }

  void printRest(std::size_t n) { out_ += "... (" + std::to_string(n) + " elements)"; }

  void printApplication(ALGEB x) {
    print(operand(x, 1), kAtom);
    out_ += '(';
    printElements(x, 2, kRelation, false);
    out_ += ')';
  }

  // An equation, another relation or a range.
  void printPair(ALGEB x) {
    const Tag t = tag(x);
    const Level place = t == Tag::range ? kSum : kRange;
    print(operand(x, 1), place);
    out_ += t == Tag::equation    ? " = "
            : t == Tag::less      ? " < "
            : t == Tag::lessEqual ? " <= "
            : t == Tag::unequal   ? " <> "
                                  : " .. ";
    print(operand(x, 2), place);
  }

  void printSum(ALGEB x) {
    for (std::size_t i = 1; i < length(x) && !tooLong(); ++i) {
      ALGEB term = operand(x, i);
      if (i == 1) {
        print(term, kSum);
      } else if (startsNegative(term)) {
        const std::size_t at = out_.size();
        out_ += " - ";
        print(term, kSum);
        if (at + 3 < out_.size() && out_[at + 3] == '-') {
          out_.erase(at + 3, 1);
        }
      } else {
        out_ += " + ";
        print(term, kProduct);
      }
    }
  }

  void printProduct(ALGEB x) {
    std::size_t first = 1;
    if (operand(x, 1) == immediate(-1) && length(x) > 2) {
      out_ += '-';
      first = 2;
    }
    for (std::size_t i = first; i < length(x) && !tooLong(); ++i) {
      out_ += i > first ? "*" : "";
      // The coefficient in front needs no parentheses.
      print(operand(x, i), i == 1 && isReal(operand(x, 1)) ? kSum : kPower);
    }
  }

  void printTable(ALGEB x) {
    out_ += "table([";
    const char* separator = "";
    std::size_t printed = 0;
    for (const auto& [key, value] : table(x).entries()) {
      out_ += separator;
      if (printed++ == options_.maxElements) {
        printRest(table(x).size());
        break;
      }
      print(key, kRange);
      out_ += " = ";
      print(value, kRange);
      separator = ", ";
      if (tooLong()) {
        break;
      }
    }
    out_ += "])";
  }

  // date("2024-02-29"), pointer(0x1f)
  void printMade(ALGEB x) {
    char address[40];
    if (isDate(x)) {
      out_ += "date(\"" + dateText(daysOf(x)) + "\")";
      return;
    }
    std::snprintf(address, sizeof address, "%lx", reinterpret_cast<Word>(pointerOf(x).address));
    out_ += std::string("pointer(0x") + address + ')';
  }

  void printArray(ALGEB x) {
    const ArrayObject& a = arrayOf(x);
    out_ += "Array(";
    for (int dim = 0; dim < a.dimensions; ++dim) {
      out_ += std::to_string(a.lower(dim)) + ".." + std::to_string(a.upper(dim)) + ", ";
    }
    std::size_t printed = 0;
    std::vector<V_INT> index(a.dimensions);
    if (a.storage == RTABLE_SPARSE && a.count > 1000) {
      out_ += "[...]";
    } else {
      printNested(x, index, 0, printed);
    }
    if (a.type != RTABLE_DAG) {
      out_ += ", datatype = ";
      out_ += typeName(a.type);
    }
    out_ += a.storage == RTABLE_SPARSE ? ", storage = sparse" : "";
    out_ += a.order == RTABLE_ROW_MAJOR && a.dimensions > 1 ? ", order = row" : "";
    out_ += ')';
  }

  void printNested(ALGEB x, std::vector<V_INT>& index, int dim, std::size_t& printed) {
    const ArrayObject& a = arrayOf(x);
    if (dim == a.dimensions) {
      const RTableData e = elementAt(x, position(state_, x, index.data()));
      print(elementToObject(state_, a.type, e), kRelation);
      ++printed;
      return;
    }
    out_ += '[';
    const std::size_t before = printed;
    for (V_INT i = 0; i < a.extent(dim); ++i) {
      out_ += i > 0 ? ", " : "";
      if (printed >= options_.maxElements || tooLong()) {
        out_ += cut_ ? "" : "...";
        break;
      }
      index[static_cast<std::size_t>(dim)] = a.lower(dim) + i;
      printNested(x, index, dim + 1, printed);
    }
    printed += printed == before ? 1 : 0;  // an empty row takes its place, too
    out_ += ']';
  }

  State& state_;
  std::string& out_;
  const TextOptions& options_;
  std::size_t start_;
  int depth_ = 0;
  bool cut_ = false;
};

}  // namespace

std::string doubleText(double d) {
  if (std::isnan(d)) {
    return "Float(undefined)";
  }
  if (std::isinf(d)) {
    return d < 0 ? "-Float(infinity)" : "Float(infinity)";
  }
  char buffer[32];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, std::fabs(d), std::chars_format::scientific);
  std::string digits;
  const char* p = buffer;
  for (; *p != 'e'; ++p) {
    if (*p != '.') {
      digits += *p;
    }
  }
  int exponent = 0;
  std::from_chars(p + (p[1] == '+' ? 2 : 1), end.ptr, exponent);
  std::string out = layOut(digits, exponent, kFixedLimit);
  return std::signbit(d) ? out.insert(0, 1, '-') : out;
}

std::string floatText(ALGEB x) {
  if (isDoubleFloat(x)) {
    return doubleText(doubleOf(x));
  }
  BigInteger m;
  std::int64_t exponent = 0;
  decimalOf(x, m, exponent);
  const bool negative = mpz_sgn(m.get()) < 0;
  mpz_abs(m.get(), m.get());
  std::string digits(mpz_sizeinbase(m.get(), 10) + 2, '\0');
  mpz_get_str(digits.data(), 10, m.get());
  digits.resize(std::strlen(digits.c_str()));
  const std::int64_t count = std::ssize(digits);
  std::string out = layOut(digits, exponent + count - 1, std::max(kFixedLimit, count));
  return negative ? out.insert(0, 1, '-') : out;
}

void appendSource(State& state, std::string& out, ALGEB x, const TextOptions& options) {
  Printer(state, out, options).print(x, kSequence);
}

std::string sourceText(State& state, ALGEB x, const TextOptions& options) {
  std::string out;
  appendSource(state, out, x, options);
  return out;
}

std::string plainText(State& state, ALGEB x) {
  return is(x, Tag::string) ? std::string(text(x))
         : isDate(x)        ? dateText(daysOf(x))
                            : sourceText(state, x);
}

}  // namespace vexel
