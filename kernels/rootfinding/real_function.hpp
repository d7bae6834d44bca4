// A callable of one double that returns a double, by reference: it must live as long as it is used.
#pragma once

#include <concepts>
#include <type_traits>

namespace vexel::kernels {

class RealFunction {
 public:
  template <typename F>
  requires(!std::same_as<std::remove_cvref_t<F>, RealFunction> &&
           std::is_object_v<std::remove_reference_t<F>> &&
           std::is_invocable_r_v<double, F&, double>)
      RealFunction(F&& f)  // NOLINT: any callable but a RealFunction stands for one
      : object_(const_cast<void*>(static_cast<const void*>(&f))),
        call_([](void* object, double x) -> double {
          return (*static_cast<std::remove_reference_t<F>*>(object))(x);
        }) {}

  double operator()(double x) const { return call_(object_, x); }

 private:
  void* object_;
  double (*call_)(void*, double);
};

}  // namespace vexel::kernels
