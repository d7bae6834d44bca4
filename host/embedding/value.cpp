// vexel::Value and the exceptions of the embedding API.

#include <utility>

#include "builtins/json.hpp"
#include "embedding/kernel_impl.hpp"
#include "values/arrays.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

State& stateOf(const Value& v) {
  if (v.kernel() == nullptr) {
    throw Error("a value without a kernel", "a value without a kernel", {});
  }
  return v.kernel()->impl().state;
}

}  // namespace

Error::Error(std::string filled, std::string message, std::vector<Value> arguments)
    : std::runtime_error(std::move(filled)),
      message_(std::move(message)),
      arguments_(std::move(arguments)) {}
Error::~Error() = default;

Value::Value(Kernel& kernel, ALGEB handle)
    : kernel_(&kernel), handle_(handle), root_(kernel.impl().roots->take(handle)) {}

Value::Value(const Value& other) : kernel_(other.kernel_), handle_(other.handle_) {
  if (other.root_ != nullptr) {
    root_ = RootPool::of(other.root_).take(handle_);
  }
}

Value::Value(Value&& other) noexcept
    : kernel_(std::exchange(other.kernel_, nullptr)),
      handle_(std::exchange(other.handle_, nullptr)),
      root_(std::exchange(other.root_, nullptr)) {}

Value& Value::operator=(Value other) noexcept {
  std::swap(kernel_, other.kernel_);
  std::swap(handle_, other.handle_);
  std::swap(root_, other.root_);
  return *this;
}

Value::~Value() {
  if (root_ != nullptr) {
    RootPool::of(root_).release(root_);
  }
}

Kernel* Value::kernel() const {
  return root_ != nullptr && RootPool::of(root_).orphaned() ? nullptr : kernel_;
}

bool Value::isNull() const { return kernel() == nullptr || vexel::isNull(handle_); }
bool Value::isNumeric() const { return kernel() != nullptr && isReal(handle_); }
bool Value::isInteger() const { return kernel() != nullptr && vexel::isInteger(handle_); }
bool Value::isArray() const { return kernel() != nullptr && vexel::isArray(handle_); }
bool Value::isList() const { return kernel() != nullptr && vexel::isList(handle_); }

double Value::number() const {
  State& state = stateOf(*this);
  if (isDoubleFloat(handle_)) {
    return doubleOf(handle_);
  }
  return kernel_->impl().run([&] {
    if (!isReal(handle_)) {
      raise(state, "a number expected, received %1", handle_);
    }
    return toDouble(state, handle_);
  });
}

std::int64_t Value::integer() const {
  State& state = stateOf(*this);
  return kernel_->impl().run([&] { return VexelToV_INT(&state, handle_); });
}

bool Value::boolean() const {
  State& state = stateOf(*this);
  return kernel_->impl().run([&] {
    if (!isBoolean(state, handle_)) {
      raise(state, "true or false expected, received %1", handle_);
    }
    return handle_ == state.trueValue;
  });
}

std::string Value::text() const {
  if (kernel_ == nullptr) {
    return "NULL";
  }
  State& state = stateOf(*this);
  return kernel_->impl().run([&] { return plainText(state, handle_); });
}

std::string Value::source() const {
  if (kernel_ == nullptr) {
    return "NULL";
  }
  State& state = stateOf(*this);
  return kernel_->impl().run([&] { return sourceText(state, handle_); });
}

std::string Value::json() const {
  if (kernel_ == nullptr) {
    return "null";
  }
  State& state = stateOf(*this);
  return kernel_->impl().run([&] { return jsonText(state, handle_); });
}

std::vector<double> Value::numbers() const {
  State& state = stateOf(*this);
  return kernel_->impl().run([&] {
    std::vector<double> result;
    const auto push = [&](ALGEB x) {
      if (!isReal(x)) {
        raise(state, "a number expected, received %1", x);
      }
      result.push_back(toDouble(state, x));
    };
    if (vexel::isArray(handle_)) {
      const ArrayObject& a = arrayOf(handle_);
      if (a.type == RTABLE_FLOAT64 && a.data != nullptr) {
        const auto* data = static_cast<const double*>(a.data);
        return std::vector<double>(data, data + a.count);
      }
      for (std::int64_t i = 0; i < a.count; ++i) {
        push(elementToObject(state, a.type, elementAt(handle_, i)));
      }
    } else if (vexel::isList(handle_) || isSequence(handle_)) {
      for (std::size_t i = 1; i <= countOf(handle_); ++i) {
        push(element(state, handle_, i));
      }
    } else {
      raise(state, "a list or an array expected, received %1", handle_);
    }
    return result;
  });
}

void* Value::block(int type, bool reading) const {
  State& state = stateOf(*this);
  return kernel_->impl().run([&] {
    if (!vexel::isArray(handle_) || arrayOf(handle_).type != type ||
        arrayOf(handle_).storage != RTABLE_RECTANGULAR) {
      raise(state, "a dense array of %1 expected, received %2", vexel::name(state, typeName(type)),
            handle_);
    }
    if (!reading && arrayOf(handle_).readOnly != 0) {
      raise(state, "the array is read-only: %1", handle_);
    }
    return arrayOf(handle_).data;
  });
}

std::size_t Value::size() const {
  if (kernel() == nullptr) {
    return 0;
  }
  return vexel::isArray(handle_) ? static_cast<std::size_t>(arrayOf(handle_).count)
                                 : countOf(handle_);
}

Value Value::operator[](std::size_t i) const {
  State& state = stateOf(*this);
  return kernel_->impl().run([&] {
    if (i >= size()) {
      raise(state, "index %1 out of range", newInteger(state, static_cast<std::int64_t>(i)));
    }
    if (vexel::isArray(handle_)) {
      const RTableData e = elementAt(handle_, static_cast<std::int64_t>(i));
      return Value(*kernel_, elementToObject(state, arrayOf(handle_).type, e));
    }
    const bool isRow = vexel::isList(handle_) || isSequence(handle_);
    return Value(*kernel_, isRow ? element(state, handle_, i + 1) : handle_);
  });
}

}  // namespace vexel
