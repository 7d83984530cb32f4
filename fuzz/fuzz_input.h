// Splits a fuzzer's input into NUL-terminated texts at its first newlines,
// so that one input can carry a value and a mask, or a pattern and a text.

#ifndef QUOREL_FUZZ_FUZZ_INPUT_H_
#define QUOREL_FUZZ_FUZZ_INPUT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

inline std::vector<std::string> splitInput(const std::uint8_t *data, std::size_t size, std::size_t parts) {
  std::vector<std::string> texts(parts);
  std::size_t part = 0;
  for (std::size_t i = 0; i < size; ++i) {
    char c = static_cast<char>(data[i]);
    if (c == '\n' && part + 1 < parts) {
      ++part;
    } else if (c != '\0') {
      texts[part] += c;
    }
  }
  return texts;
}

#endif  // QUOREL_FUZZ_FUZZ_INPUT_H_
