// What a kernel throws when it cannot go on: a text for the user, which outlives the exception.
#pragma once

#include <exception>

namespace vexel::kernels {

class Refusal : public std::exception {
 public:
  explicit Refusal(const char* text) : text_(text) {}
  const char* what() const noexcept override { return text_; }

 private:
  const char* text_;
};

}  // namespace vexel::kernels
