// Instructions while they are being written: operands whose places in the frame are known when all
// of them are counted, and jumps whose targets come later.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "language/hardware.hpp"

namespace vexel {

// A frame lies on the machine stack.
constexpr std::size_t kLargestFrame = 8192;

// Where a value is.  Intermediate values and constants move behind the slots when all are counted.
struct Operand {
  enum class Kind : std::uint8_t { slot, temporary, constant, anywhere, nowhere };
  Kind kind;
  std::int32_t number = 0;
};
// What a caller may want of a value: to be wherever it is, or not to be computed for its own sake.
constexpr Operand kAnywhere{Operand::Kind::anywhere};
constexpr Operand kNowhere{Operand::Kind::nowhere};

class HardwareDrafts {
 protected:
  using Op = HardwareCode::Op;
  HardwareDrafts(int slots, HardwareCode& code) : out_(code), slots_(slots) {}

  using Kind = Operand::Kind;
  using Places = std::vector<std::size_t>;  // jumps whose target is not known yet
  struct Draft {
    Op op;
    std::uint16_t n;
    Operand to;
    Operand x;
    Operand y;
  };

  // ---- instructions

  void emit(Op op, Operand to, Operand x = {}, Operand y = {}) {
    drafts_.push_back({op, 0, to, x, y});
  }
  std::size_t here() const { return drafts_.size(); }

  // A jump to a place that land() names later.
  void emitJump(Places& places, Op op, Operand x = {}, Operand y = {}) {
    places.push_back(here());
    emit(op, {}, x, y);
  }
  void land(const Places& places, std::size_t target) {
    for (const std::size_t place : places) {
      drafts_[place].to = {Kind::slot, static_cast<std::int32_t>(target)};
    }
  }

  // ---- operands

  Operand newTemporary() {
    const Operand t{Kind::temporary, static_cast<std::int32_t>(temporaries_++)};
    out_.temporaries = std::max(out_.temporaries, temporaries_);
    return t;
  }
  Operand newSlot() { return {Kind::slot, slots_++}; }

  // The place of a value that an instruction makes.
  Operand target(Operand wanted) {
    return wanted.kind == Kind::anywhere || wanted.kind == Kind::nowhere ? newTemporary() : wanted;
  }

  Operand constant(double d) {
    const auto same = [d](double c) {
      return std::bit_cast<std::uint64_t>(c) == std::bit_cast<std::uint64_t>(d);
    };
    const auto found = std::find_if(out_.constants.begin(), out_.constants.end(), same);
    const auto i = static_cast<std::int32_t>(found - out_.constants.begin());
    if (found == out_.constants.end()) {
      out_.constants.push_back(d);
    }
    return {Kind::constant, i};
  }

  // A value that is somewhere already, brought where it is wanted.
  Operand deliver(Operand value, Operand wanted) {
    if (wanted.kind == Kind::anywhere || wanted.kind == Kind::nowhere) {
      return value;
    }
    emit(Op::move, wanted, value);
    return wanted;
  }

  std::int32_t object(ALGEB x) {
    const auto found = std::find(out_.objects.begin(), out_.objects.end(), x);
    const auto i = static_cast<std::int32_t>(found - out_.objects.begin());
    if (found == out_.objects.end()) {
      out_.objects.push_back(x);
    }
    return i;
  }

  // ---- the end

  // Gives every operand its place in the frame; false when the frame is too large.
  bool settle() {
    out_.slots = static_cast<std::size_t>(slots_);
    if (out_.frameSize() > kLargestFrame) {
      return false;
    }
    const auto place = [this](Operand operand) {
      switch (operand.kind) {
        case Kind::temporary:
          return operand.number + static_cast<std::int32_t>(out_.slots);
        case Kind::constant:
          return operand.number + static_cast<std::int32_t>(out_.constantsAt());
        default:
          return operand.number;
      }
    };
    out_.code.reserve(drafts_.size());
    for (const Draft& d : drafts_) {
      out_.code.push_back({d.op, d.n, place(d.to), place(d.x), place(d.y)});
    }
    return true;
  }

  HardwareCode& out_;
  std::vector<Draft> drafts_;
  int slots_;
  std::size_t temporaries_ = 0;  // in use
};

}  // namespace vexel
