#include "marlo/LastChange.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <unordered_map>

#include "FaultPoint.h"
#include "Xml.h"
#include "marlo/Result.h"

namespace marlo {
namespace {

constexpr char kAvtNamespace[] = "urn:schemas-upnp-org:metadata-1-0/AVT/";
constexpr char kRcsNamespace[] = "urn:schemas-upnp-org:metadata-1-0/RCS/";

// What becomes of each byte of a value in attribute text. kDecode: the byte starts a multi-byte character,
// which is copied only when it is well-formed UTF-8 and a character XML allows.
enum ByteRule : unsigned char { kCopy, kEscape, kDrop, kDecode };

struct ByteRules {
  ByteRule rule[256];
};

constexpr ByteRules MakeByteRules() {
  ByteRules rules{};
  for (int c = 0; c < 256; ++c) rules.rule[c] = c < 0x20 ? kDrop : c < 0x80 ? kCopy : kDecode;
  // Tab, newline and carriage return are legal but a reader's attribute-value normalisation would turn
  // them into spaces; as character references they survive.
  rules.rule[static_cast<unsigned char>('\t')] = kEscape;
  rules.rule[static_cast<unsigned char>('\n')] = kEscape;
  rules.rule[static_cast<unsigned char>('\r')] = kEscape;
  rules.rule[static_cast<unsigned char>('&')] = kEscape;
  rules.rule[static_cast<unsigned char>('<')] = kEscape;
  rules.rule[static_cast<unsigned char>('>')] = kEscape;
  rules.rule[static_cast<unsigned char>('"')] = kEscape;
  return rules;
}

constexpr ByteRules kByteRules = MakeByteRules();

const char* EscapeOf(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    default:
      return "&#13;";  // '\r', the only other kEscape byte
  }
}

bool NextCodePoint(const unsigned char** p, char32_t* c);

// U+FFFD, the replacement character, in UTF-8.
constexpr char kReplacement[] = "\xEF\xBF\xBD";

// Appends `text` as the content of a double-quoted attribute: runs of plain bytes in one go. A byte that
// does not start a well-formed UTF-8 character, or starts U+FFFE or U+FFFF, becomes U+FFFD: copied as it
// stands it would make the whole document malformed, and every subscriber would lose every variable of
// the event for one bad byte of one value. `text` is zero-terminated (std::string), which ends a cut-off
// sequence.
void AppendAttributeText(const std::string& text, std::string* out) {
  const char* run = text.data();
  const char* const end = run + text.size();
  for (const char* p = run; p != end; ++p) {
    const ByteRule rule = kByteRules.rule[static_cast<unsigned char>(*p)];
    if (rule == kCopy) continue;
    if (rule == kDecode) {
      const unsigned char* next = reinterpret_cast<const unsigned char*>(p);
      char32_t c;
      if (NextCodePoint(&next, &c) && c != 0xFFFE && c != 0xFFFF) {
        p = reinterpret_cast<const char*>(next) - 1;  // the whole character stays in the run
        continue;
      }
    }
    out->append(run, static_cast<std::size_t>(p - run));
    if (rule == kEscape) out->append(EscapeOf(*p));
    if (rule == kDecode) out->append(kReplacement);
    run = p + 1;
  }
  out->append(run, static_cast<std::size_t>(end - run));
}

void AppendNumber(unsigned long number, std::string* out) {
  char digits[24];
  const std::to_chars_result result = std::to_chars(digits, digits + sizeof(digits), number);
  out->append(digits, static_cast<std::size_t>(result.ptr - digits));
}

// The characters an XML name may start with, and the further ones it may continue with (the ranges a
// current XML 1.0 parser checks names against), without ':' since our documents use namespaces.
struct CodeRange {
  char32_t first;
  char32_t last;
};
constexpr CodeRange kNameStartRanges[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr CodeRange kNameMoreRanges[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t N>
bool InRanges(const CodeRange (&ranges)[N], char32_t c) {
  for (const CodeRange& range : ranges) {
    if (c >= range.first && c <= range.last) return true;
  }
  return false;
}

// Decodes the UTF-8 character at *p and moves past it; false for a malformed, overlong or surrogate
// sequence (a name must be well-formed UTF-8 for the document to be XML at all).
bool NextCodePoint(const unsigned char** p, char32_t* c) {
  const unsigned char* s = *p;
  int length;
  char32_t minimum;
  if (s[0] < 0x80) {
    *c = s[0];
    *p = s + 1;
    return true;
  } else if ((s[0] & 0xE0) == 0xC0) {
    length = 2, minimum = 0x80, *c = s[0] & 0x1F;
  } else if ((s[0] & 0xF0) == 0xE0) {
    length = 3, minimum = 0x800, *c = s[0] & 0x0F;
  } else if ((s[0] & 0xF8) == 0xF0) {
    length = 4, minimum = 0x10000, *c = s[0] & 0x07;
  } else {
    return false;
  }
  for (int i = 1; i < length; ++i) {  // stops at the terminating '\0', which is no continuation byte
    if ((s[i] & 0xC0) != 0x80) return false;
    *c = (*c << 6) | (s[i] & 0x3F);
  }
  if (*c < minimum || *c > 0x10FFFF || (*c >= 0xD800 && *c <= 0xDFFF)) return false;
  *p = s + length;
  return true;
}

// True for an XML name without a colon.
bool IsVariableName(const char* name) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(name);
  if (*p == '\0') return false;
  for (bool first = true; *p != '\0'; first = false) {
    char32_t c;
    if (!NextCodePoint(&p, &c)) return false;
    if (c < 0x80) {  // the usual case, without the tables
      const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
      const bool more = (c >= '0' && c <= '9') || c == '-' || c == '.';
      if (!letter && (first || !more)) return false;
    } else if (!InRanges(kNameStartRanges, c) && (first || !InRanges(kNameMoreRanges, c))) {
      return false;
    }
  }
  return true;
}

// Reads an InstanceID's val: a decimal number without sign that fits, blanks around it allowed.
bool ParseInstanceId(const std::string& text, unsigned long* id) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
  while (begin != end && isBlank(*begin)) ++begin;
  while (end != begin && isBlank(end[-1])) --end;
  if (begin == end || *begin < '0' || *begin > '9') return false;  // from_chars would take a '-'
  const std::from_chars_result result = std::from_chars(begin, end, *id);
  return result.ec == std::errc() && result.ptr == end;
}

int TypeOfNamespace(const xmlNode* root, int current) {
  if (root->ns == nullptr || root->ns->href == nullptr) return current;
  const char* href = reinterpret_cast<const char*>(root->ns->href);
  if (std::strcmp(href, kAvtNamespace) == 0) return LastChange::kTypeAVTransport;
  if (std::strcmp(href, kRcsNamespace) == 0) return LastChange::kTypeRenderingControl;
  return current;
}

}  // namespace

LastChange::LastChange() noexcept : type_(kNoType), sets_(), xml_(), xmlValid_(false) {}

LastChange::~LastChange() = default;

void* LastChange::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLastChangeCreation, nullptr)) return nullptr;
  return std::malloc(size);
}

void LastChange::operator delete(void* block) noexcept { std::free(block); }

void LastChange::operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }

int32_t LastChange::SetType(int type) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLastChangeSetType, &code)) return code;
  if (type != kTypeAVTransport && type != kTypeRenderingControl) return kErrorInvalidArgument;
  if (type != type_) {
    type_ = type;
    xmlValid_ = false;
  }
  return kOk;
}

int32_t LastChange::SetStateVariable(unsigned long instanceId, const char* name, const char* value,
                                     const char* channel) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLastChangeSetStateVariable, &code)) {
    return code;
  }
  if (name == nullptr || value == nullptr || !IsVariableName(name)) return kErrorInvalidArgument;
  if (type_ == kNoType) return kErrorFailure;
  try {
    VariableSet* set = nullptr;
    for (VariableSet& candidate : sets_) {
      if (candidate.instanceId == instanceId) {
        set = &candidate;
        break;
      }
    }
    if (set != nullptr) {
      const bool hasChannel = channel != nullptr;
      for (Variable& variable : set->variables) {
        if (variable.hasChannel != hasChannel || variable.name != name ||
            (hasChannel && variable.channel != channel)) {
          continue;
        }
        if (variable.value == value) return kOk;  // no change: the cached text stays valid
        // Copy first and swap, so that no memory leaves the old value in place.
        std::string copy(value);
        variable.value.swap(copy);
        xmlValid_ = false;
        return kOk;
      }
    }
    // A new variable is built whole before it goes in: a failed push_back changes nothing.
    Variable variable{name, value, channel != nullptr ? channel : "", channel != nullptr};
    if (set != nullptr) {
      set->variables.push_back(std::move(variable));
    } else {
      VariableSet added{instanceId, {}};
      added.variables.push_back(std::move(variable));
      sets_.push_back(std::move(added));
    }
    xmlValid_ = false;
    return kOk;
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
}

const char* LastChange::GetXMLText() {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLastChangeGetXMLText, nullptr)) {
    return nullptr;
  }
  if (type_ == kNoType) return nullptr;
  if (!xmlValid_) {
    try {
      BuildXmlText();
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    xmlValid_ = true;
  }
  return xml_.c_str();
}

void LastChange::BuildXmlText() {
  // Escapes rarely grow a value by much; reserving the plain size plus the markup avoids nearly all
  // reallocation, and clear() keeps the capacity of earlier builds.
  std::size_t size = 80;
  for (const VariableSet& set : sets_) {
    size += 48;
    for (const Variable& variable : set.variables) {
      size += variable.name.size() + variable.value.size() + variable.channel.size() + 24;
    }
  }
  xml_.clear();
  xml_.reserve(size);
  xml_.append("<Event xmlns=\"");
  xml_.append(type_ == kTypeRenderingControl ? kRcsNamespace : kAvtNamespace);
  if (sets_.empty()) {
    xml_.append("\"/>");
    return;
  }
  xml_.append("\">");
  for (const VariableSet& set : sets_) {
    xml_.append("<InstanceID val=\"");
    AppendNumber(set.instanceId, &xml_);
    if (set.variables.empty()) {  // only a read document has these
      xml_.append("\"/>");
      continue;
    }
    xml_.append("\">");
    for (const Variable& variable : set.variables) {
      xml_.push_back('<');
      xml_.append(variable.name);
      if (variable.hasChannel) {
        xml_.append(" channel=\"");
        AppendAttributeText(variable.channel, &xml_);
        xml_.push_back('"');
      }
      xml_.append(" val=\"");
      AppendAttributeText(variable.value, &xml_);
      xml_.append("\"/>");
    }
    xml_.append("</InstanceID>");
  }
  xml_.append("</Event>");
}

int32_t LastChange::SetXMLText(const char* xml) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLastChangeSetXMLText, &code)) return code;
  // Whatever happens next, the old content is gone.
  sets_.clear();
  xmlValid_ = false;
  if (xml == nullptr) return kErrorInvalidArgument;
  try {
    std::vector<VariableSet> sets;
    int type = type_;
    const int32_t result = ReadDocument(xml, &type, &sets);
    if (result != kOk) return result;
    sets_.swap(sets);
    type_ = type;
    return kOk;
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
}

int32_t LastChange::ReadDocument(const char* xml, int* type, std::vector<VariableSet>* sets) {
  // On purpose no second try with libxml2's recovery: see the header.
  const dmr_runtime::XmlDocument doc(dmr_runtime::ParseXmlText(xml, std::strlen(xml), /*recover=*/false));
  if (doc == nullptr) return kErrorInvalidArgument;
  // Entities can only be declared in a DTD; refusing any DTD means no attribute value below can expand
  // into more than its own text.
  if (doc->intSubset != nullptr || doc->extSubset != nullptr) return kErrorInvalidArgument;
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  if (!dmr_runtime::IsElementNamed(root, "Event")) return kErrorInvalidArgument;
  *type = TypeOfNamespace(root, *type);

  // Where each instance and each (instance, name, channel) sits in *sets, so that repeats merge in
  // linear time even for a hostile document.
  std::unordered_map<unsigned long, std::size_t> setIndex;
  std::unordered_map<std::string, std::size_t> variableIndex;
  std::string key;
  std::string text;
  for (const xmlNode* instance = root->children; instance != nullptr; instance = instance->next) {
    if (!dmr_runtime::IsElementNamed(instance, "InstanceID")) continue;
    text.clear();
    unsigned long id = 0;
    if (!dmr_runtime::GetAttribute(instance, "val", &text) || !ParseInstanceId(text, &id)) continue;
    const auto placed = setIndex.emplace(id, sets->size());
    if (placed.second) sets->push_back(VariableSet{id, {}});
    VariableSet& set = (*sets)[placed.first->second];
    for (const xmlNode* element = instance->children; element != nullptr; element = element->next) {
      if (element->type != XML_ELEMENT_NODE || element->name == nullptr) continue;
      Variable variable{reinterpret_cast<const char*>(element->name), "", "", false};
      if (!dmr_runtime::GetAttribute(element, "val", &variable.value)) continue;
      variable.hasChannel = dmr_runtime::GetAttribute(element, "channel", &variable.channel);
      key.clear();
      AppendNumber(id, &key);
      key.push_back('\0');
      key.append(variable.name);
      key.push_back(variable.hasChannel ? '\1' : '\0');
      key.append(variable.channel);
      const auto found = variableIndex.emplace(key, set.variables.size());
      if (found.second) {
        set.variables.push_back(std::move(variable));
      } else {
        set.variables[found.first->second].value.swap(variable.value);
      }
    }
  }
  return kOk;
}

const LastChange::VariableSet* LastChange::GetVariableSet(int index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= sets_.size()) return nullptr;
  return &sets_[static_cast<std::size_t>(index)];
}

unsigned long LastChange::GetInstanceId(const VariableSet* set) const {
  return set != nullptr ? set->instanceId : 0;
}

const char* LastChange::GetVariableName(const VariableSet* set, int index) const {
  if (set == nullptr || index < 0 || static_cast<std::size_t>(index) >= set->variables.size()) {
    return nullptr;
  }
  return set->variables[static_cast<std::size_t>(index)].name.c_str();
}

const char* LastChange::GetVariableValue(const VariableSet* set, int index) const {
  if (set == nullptr || index < 0 || static_cast<std::size_t>(index) >= set->variables.size()) {
    return nullptr;
  }
  return set->variables[static_cast<std::size_t>(index)].value.c_str();
}

const char* LastChange::GetVariableChannel(const VariableSet* set, int index) const {
  if (set == nullptr || index < 0 || static_cast<std::size_t>(index) >= set->variables.size()) {
    return nullptr;
  }
  const Variable& variable = set->variables[static_cast<std::size_t>(index)];
  return variable.hasChannel ? variable.channel.c_str() : nullptr;
}

}  // namespace marlo
