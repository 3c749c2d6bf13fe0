#include "host/XmlWriter.h"

#include <libxml/xmlwriter.h>

#include <cstddef>
#include <cstdint>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// The length of the UTF-8 sequence of one XML character at `at`, or 0 when the bytes there are not one.
std::size_t ValidCharacterLength(const std::string& text, std::size_t at) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto continuation = [&text, &byte](std::size_t i) {
    return i < text.size() && (byte(i) & 0xC0) == 0x80;
  };
  const unsigned char lead = byte(at);
  if (lead < 0x80) return (lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r') ? 1 : 0;
  if (lead >= 0xC2 && lead <= 0xDF) return continuation(at + 1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    if (!continuation(at + 1) || !continuation(at + 2)) return 0;
    const uint32_t code = ((lead & 0x0Fu) << 12) | ((byte(at + 1) & 0x3Fu) << 6) | (byte(at + 2) & 0x3Fu);
    // Overlong forms, surrogates and the two non-characters XML excludes.
    if (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF) || code == 0xFFFE || code == 0xFFFF) return 0;
    return 3;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    if (!continuation(at + 1) || !continuation(at + 2) || !continuation(at + 3)) return 0;
    const uint32_t code = ((lead & 0x07u) << 18) | ((byte(at + 1) & 0x3Fu) << 12) |
                          ((byte(at + 2) & 0x3Fu) << 6) | (byte(at + 3) & 0x3Fu);
    return (code >= 0x10000 && code <= 0x10FFFF) ? 4 : 0;
  }
  return 0;
}

}  // namespace

std::string HOST_ValidXmlText(const std::string& text) {
  std::string valid;
  valid.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = ValidCharacterLength(text, at);
    if (length == 0) {
      valid += kReplacement;
      ++at;
    } else {
      valid.append(text, at, length);
      at += length;
    }
  }
  return valid;
}

HOST_XmlWriter::HOST_XmlWriter() : buffer_(xmlBufferCreate()), writer_(nullptr), failed_(false) {
  if (buffer_ != nullptr) writer_ = xmlNewTextWriterMemory(buffer_, 0);
  if (writer_ == nullptr) {
    failed_ = true;
    return;
  }
  Check(xmlTextWriterSetIndent(writer_, 1));
  Check(xmlTextWriterSetIndentString(writer_, X("  ")));
  Check(xmlTextWriterStartDocument(writer_, "1.0", "utf-8", nullptr));
}

HOST_XmlWriter::~HOST_XmlWriter() {
  if (writer_ != nullptr) xmlFreeTextWriter(writer_);
  if (buffer_ != nullptr) xmlBufferFree(buffer_);
}

void HOST_XmlWriter::Check(int result) {
  if (result < 0) failed_ = true;
}

void HOST_XmlWriter::Start(const char* name, const char* namespaceUri) {
  if (failed_) return;
  Check(xmlTextWriterStartElement(writer_, X(name)));
  if (namespaceUri != nullptr) Check(xmlTextWriterWriteAttribute(writer_, X("xmlns"), X(namespaceUri)));
}

void HOST_XmlWriter::StartPrefixed(const char* prefix, const char* name, const char* namespaceUri) {
  if (failed_) return;
  Check(xmlTextWriterStartElementNS(writer_, X(prefix), X(name), X(namespaceUri)));
}

void HOST_XmlWriter::Attribute(const char* name, const std::string& value) {
  if (failed_) return;
  Check(xmlTextWriterWriteAttribute(writer_, X(name), X(HOST_ValidXmlText(value).c_str())));
}

void HOST_XmlWriter::Element(const char* name, const std::string& text) {
  if (failed_) return;
  Check(xmlTextWriterWriteElement(writer_, X(name), X(HOST_ValidXmlText(text).c_str())));
}

void HOST_XmlWriter::PrefixedElement(const char* prefix, const char* name, const char* namespaceUri,
                                     const std::string& text) {
  if (failed_) return;
  Check(xmlTextWriterWriteElementNS(writer_, X(prefix), X(name), X(namespaceUri),
                                    X(HOST_ValidXmlText(text).c_str())));
}

void HOST_XmlWriter::End() {
  if (failed_) return;
  Check(xmlTextWriterEndElement(writer_));
}

std::string HOST_XmlWriter::Finish() {
  if (failed_) return "";
  Check(xmlTextWriterEndDocument(writer_));
  // Flushing happens when the writer is freed; the buffer outlives it.
  xmlFreeTextWriter(writer_);
  writer_ = nullptr;
  if (failed_) return "";
  failed_ = true;  // no more calls
  return std::string(reinterpret_cast<const char*>(xmlBufferContent(buffer_)),
                     static_cast<std::size_t>(xmlBufferLength(buffer_)));
}
