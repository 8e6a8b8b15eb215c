// The element that the measurements of XML write: three attributes and a value of 200 bytes of
// which some have to be escaped.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "measure.h"

namespace kqbench {

inline constexpr size_t kElements = 64;  // of an iteration, each of content of its own
inline constexpr size_t kRounds = 16;    // how often they are taken in turn
inline constexpr const char* kElementRow = "xml/element";

struct Element {
  uint32_t id;
  std::string source;
  std::string time;
  std::string value;
};

inline std::vector<Element> fresh_elements() {
  std::vector<Element> elements;
  for (size_t i = 0; i < kElements; ++i) {
    std::string value(200, '?');
    for (char& byte : value) {
      byte = static_cast<char>('a' + fresh().between(0, 25));
    }
    for (const char special : {'<', '>', '&', '"', '\''}) {
      value[fresh().between(0, 199)] = special;
    }
    elements.push_back({fresh().between(0, 99999), "agent" + std::to_string(fresh().between(0, 99)),
                        "2026-11-21T05:" + std::to_string(fresh().between(10, 59)), value});
  }
  return elements;
}

// Enters a contestant: `write(element)` writes one element to a buffer that is empty before.
template <class Write>
void add_element_measurement(const char* contestant, Write write) {
  add_measurement(kElementRow, contestant, kRounds * kElements, fresh_elements,
                  [=](std::vector<Element>& elements) {
                    for (size_t round = 0; round < kRounds; ++round) {
                      for (const Element& element : elements) {
                        write(element);
                      }
                    }
                  });
}

}  // namespace kqbench
