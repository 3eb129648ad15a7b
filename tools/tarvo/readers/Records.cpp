#include "readers/Records.h"

#include <utility>

namespace tarvo::cli {

std::string InputError::what() const {
  std::string text = file;
  if (line > 0) text += ":" + std::to_string(line);
  text += ": ";
  if (!field.empty()) text += field + ": ";
  return text + message;
}

InputFailure::InputFailure(InputError error)
    : std::runtime_error(error.what()), error_(std::move(error)) {}

const InputError& InputFailure::error() const { return error_; }

}  // namespace tarvo::cli
