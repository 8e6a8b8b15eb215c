// XML elements: libxml2's text writer.

#include <libxml/xmlwriter.h>

#include "xml_bench.h"

namespace kqbench {
namespace {

const xmlChar* text(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

void write_element(const Element& element) {
  static xmlBuffer* const buffer = xmlBufferCreateSize(1024);
  static xmlTextWriter* const writer = xmlNewTextWriterMemory(buffer, 0);
  xmlBufferEmpty(buffer);
  xmlTextWriterStartElement(writer, text("Value"));
  xmlTextWriterWriteFormatAttribute(writer, text("id"), "%u", element.id);
  xmlTextWriterWriteAttribute(writer, text("source"), text(element.source.c_str()));
  xmlTextWriterWriteAttribute(writer, text("time"), text(element.time.c_str()));
  xmlTextWriterWriteString(writer, text(element.value.c_str()));
  require(xmlTextWriterEndElement(writer) >= 0 && xmlTextWriterFlush(writer) > 0);
  benchmark::DoNotOptimize(buffer);
}

const bool kAdded = [] {
  add_element_measurement("libxml2", write_element);
  return true;
}();

}  // namespace
}  // namespace kqbench
