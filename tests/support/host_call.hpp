// Runs C++ code as a call from the host, so that a host error it raises arrives as vexel::Error.
#pragma once

#include <span>
#include <vexel/kernel.hpp>

template <typename F>
void inHost(vexel::Kernel& kernel, F f) {
  const vexel::Value call =
      kernel.function("test_call", [&f](vexel::Kernel& k, std::span<const vexel::Value>) {
        f();
        return k.null();
      });
  kernel.apply(call, {});
}
