#include "corva/MediaMetaData.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "FaultPoint.h"
#include "Xml.h"
#include "dmr_cmn/Result.h"

namespace corva {
namespace {

constexpr const char kBlanks[] = " \t\r\n";

bool IsBlank(const std::string& text) { return text.find_first_not_of(kBlanks) == std::string::npos; }

void Trim(std::string* text) {
  const std::size_t first = text->find_first_not_of(kBlanks);
  if (first == std::string::npos) {
    text->clear();
    return;
  }
  text->erase(text->find_last_not_of(kBlanks) + 1);
  text->erase(0, first);
}

// True when the '&' at text[at] starts a reference the parser will resolve: a character reference or
// one of the five predefined entities. DIDL-Lite declares no entities of its own.
bool StartsReference(const std::string& text, std::size_t at) {
  static const char* const kPredefined[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
  for (const char* entity : kPredefined) {
    if (text.compare(at, std::strlen(entity), entity) == 0) return true;
  }
  std::size_t i = at + 1;
  if (i >= text.size() || text[i] != '#') return false;
  ++i;
  const bool hex = i < text.size() && text[i] == 'x';
  if (hex) ++i;
  const std::size_t digits = i;
  while (i < text.size() &&
         ((text[i] >= '0' && text[i] <= '9') ||
          (hex && ((text[i] >= 'a' && text[i] <= 'f') || (text[i] >= 'A' && text[i] <= 'F'))))) {
    ++i;
  }
  return i > digits && i < text.size() && text[i] == ';';
}

// Media servers put URLs with query strings into <res> without escaping their '&'. libxml2's recovery
// would drop the "&name" after each of them and hand the renderer a URL that points elsewhere, so every
// '&' that starts no reference is escaped before parsing. Comments and CDATA sections, where '&' is
// plain text, are copied as they are.
std::string EscapeBareAmpersands(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '<') {
      const char* end = nullptr;
      if (text.compare(i, 4, "<!--") == 0) end = "-->";
      if (text.compare(i, 9, "<![CDATA[") == 0) end = "]]>";
      if (end != nullptr) {
        std::size_t stop = text.find(end, i);
        stop = stop == std::string::npos ? text.size() : stop + std::strlen(end);
        out.append(text, i, stop - i);
        i = stop;
        continue;
      }
    }
    if (c == '&' && !StartsReference(text, i)) {
      out.append("&amp;");
    } else {
      out.push_back(c);
    }
    ++i;
  }
  return out;
}

// The first element named `name` at or below `node`, depth first in document order.
const xmlNode* FindFirst(const xmlNode* node, const char* name) {
  for (; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    if (dmr_runtime::HasLocalName(node, name)) return node;
    const xmlNode* found = FindFirst(node->children, name);
    if (found != nullptr) return found;
  }
  return nullptr;
}

std::string TrimmedText(const xmlNode* node) {
  std::string text;
  dmr_runtime::AppendTextContent(node, &text);
  Trim(&text);
  return text;
}

std::string TrimmedAttribute(const xmlNode* node, const char* name) {
  std::string value;
  dmr_runtime::GetAttribute(node, name, &value);
  Trim(&value);
  return value;
}

}  // namespace

MediaMetaData::MediaMetaData() = default;
MediaMetaData::~MediaMetaData() = default;

int32_t MediaMetaData::SetConformMetaData(const char* didl) {
  int32_t code = 0;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kMetaDataSet, &code)) return code;
  if (didl == nullptr) {
    text_.clear();
    fields_ = Fields();
    return DMR_CMN_ERR_GENERIC;
  }
  try {
    std::string text(didl);
    Fields fields;
    // Blank metadata is what a control point sends for a URI it knows nothing about: not an error.
    const bool usable = IsBlank(text) || Parse(text, &fields);
    text_.swap(text);
    std::swap(fields_, fields);
    return usable ? 0 : DMR_CMN_ERR_GENERIC;
  } catch (const std::bad_alloc&) {
    return DMR_CMN_ERR_NO_MEMORY;
  }
}

bool MediaMetaData::Parse(const std::string& text, Fields* fields) {
  const std::string repaired = EscapeBareAmpersands(text);
  const dmr_runtime::XmlDocument doc(
      dmr_runtime::ParseXmlText(repaired.data(), repaired.size(), /*recover=*/true));
  if (doc == nullptr) return false;
  const xmlNode* root = xmlDocGetRootElement(doc.get());
  const xmlNode* object = FindFirst(root, "item");
  if (object == nullptr) object = FindFirst(root, "container");
  if (object == nullptr) return false;

  // Each field comes from the first child of its name; later ones (a second title, say) are ignored.
  struct Field {
    const char* name;
    std::string* value;
    bool seen;
  };
  Field table[] = {
      {"title", &fields->title, false},         {"creator", &fields->creator, false},
      {"artist", &fields->artist, false},       {"album", &fields->album, false},
      {"genre", &fields->genre, false},         {"class", &fields->itemClass, false},
      {"albumArtURI", &fields->albumArtURI, false},
  };
  for (const xmlNode* child = object->children; child != nullptr; child = child->next) {
    if (dmr_runtime::HasLocalName(child, "res")) {
      Resource resource;
      resource.uri = TrimmedText(child);
      resource.protocolInfo = TrimmedAttribute(child, "protocolInfo");
      resource.duration = TrimmedAttribute(child, "duration");
      resource.size = TrimmedAttribute(child, "size");
      resource.bitrate = TrimmedAttribute(child, "bitrate");
      resource.sampleFrequency = TrimmedAttribute(child, "sampleFrequency");
      resource.nrAudioChannels = TrimmedAttribute(child, "nrAudioChannels");
      resource.bitsPerSample = TrimmedAttribute(child, "bitsPerSample");
      fields->resources.push_back(std::move(resource));
      continue;
    }
    for (Field& field : table) {
      if (!field.seen && dmr_runtime::HasLocalName(child, field.name)) {
        *field.value = TrimmedText(child);
        field.seen = true;
        break;
      }
    }
  }
  // An item without an artist, or with an empty one, is credited to its creator.
  if (fields->artist.empty()) fields->artist = fields->creator;
  return true;
}

const char* MediaMetaData::GetMetaDataText() const { return text_.c_str(); }
const char* MediaMetaData::GetTitle() const { return fields_.title.c_str(); }
const char* MediaMetaData::GetCreator() const { return fields_.creator.c_str(); }
const char* MediaMetaData::GetArtist() const { return fields_.artist.c_str(); }
const char* MediaMetaData::GetAlbum() const { return fields_.album.c_str(); }
const char* MediaMetaData::GetGenre() const { return fields_.genre.c_str(); }
const char* MediaMetaData::GetClass() const { return fields_.itemClass.c_str(); }
const char* MediaMetaData::GetAlbumArtURI() const { return fields_.albumArtURI.c_str(); }

std::size_t MediaMetaData::GetResourceCount() const { return fields_.resources.size(); }

const MediaMetaData::Resource* MediaMetaData::ResourceAt(std::size_t index) const {
  return index < fields_.resources.size() ? &fields_.resources[index] : nullptr;
}

const char* MediaMetaData::GetResourceURI(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->uri.c_str() : "";
}

const char* MediaMetaData::GetResourceProtocolInfo(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->protocolInfo.c_str() : "";
}

const char* MediaMetaData::GetResourceDuration(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->duration.c_str() : "";
}

const char* MediaMetaData::GetResourceSize(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->size.c_str() : "";
}

const char* MediaMetaData::GetResourceBitrate(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->bitrate.c_str() : "";
}

const char* MediaMetaData::GetResourceSampleFrequency(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->sampleFrequency.c_str() : "";
}

const char* MediaMetaData::GetResourceNrAudioChannels(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->nrAudioChannels.c_str() : "";
}

const char* MediaMetaData::GetResourceBitsPerSample(std::size_t index) const {
  const Resource* resource = ResourceAt(index);
  return resource != nullptr ? resource->bitsPerSample.c_str() : "";
}

const char* MediaMetaData::GetURI() const { return GetResourceURI(0); }
const char* MediaMetaData::GetProtocolInfo() const { return GetResourceProtocolInfo(0); }
const char* MediaMetaData::GetDuration() const { return GetResourceDuration(0); }
const char* MediaMetaData::GetSize() const { return GetResourceSize(0); }
const char* MediaMetaData::GetBitrate() const { return GetResourceBitrate(0); }
const char* MediaMetaData::GetSampleFrequency() const { return GetResourceSampleFrequency(0); }
const char* MediaMetaData::GetNrAudioChannels() const { return GetResourceNrAudioChannels(0); }

}  // namespace corva
