// marlo::LastChange: the LastChange document of UPnP AV eventing.
//
// Builds the document a renderer sends as the value of its evented "LastChange" variable:
//
//   <Event xmlns="urn:schemas-upnp-org:metadata-1-0/AVT/"><InstanceID val="0"><TransportState
//   val="PLAYING"/><CurrentTrack val="3"/></InstanceID></Event>
//
// and parses such documents as real renderers send them (namespace prefixes, whitespace, entities).
//
// Building: SetType, then SetStateVariable for each change. Instances appear in the order of their first
// variable, variables within an instance in the order they were first set; a variable set again keeps its
// place and takes the new value. Values are escaped as XML attribute text.
//
// Reading: SetXMLText, then walk GetVariableSet(0, 1, ...) and, in each set, GetVariableName and
// GetVariableValue (0, 1, ...) until they answer null.
//
// Choices where the format leaves room:
//  - A variable is identified by its name and its channel: Volume channel="Master" and Volume
//    channel="LF" are two elements, and a variable without channel is a third.
//  - Names must be XML names without a colon (the document is namespaced), in well-formed UTF-8: a letter
//    or '_', then letters, digits, '_', '-', '.' (with the non-ASCII letters and marks XML 1.0 allows).
//  - Values and channels are taken as UTF-8 and copied byte for byte, except that & < > " are escaped,
//    tab, newline and carriage return become &#9; &#10; &#13; (so that a reader gets them back rather than
//    spaces), and the other control characters below 0x20 are dropped: no XML 1.0 document can carry them,
//    not even as character references. For the same reason a byte that does not start a well-formed
//    UTF-8 character, and the non-characters U+FFFE and U+FFFF, become U+FFFD: the document stays
//    well-formed whatever a value holds.
//  - Reading is strict: text that is not well-formed XML is refused, not repaired, because a repaired
//    document can silently hold other values than the sender meant. A document with a document type
//    declaration is refused as malformed: no event carries one, and refusing it means no declared entity
//    is ever expanded (the "billion laughs" attack).
//  - An InstanceID whose val is not a decimal number without sign (surrounding blanks allowed) that fits
//    an unsigned long is skipped with its variables; other children of Event are ignored. InstanceIDs
//    with the same val merge into one set, and a variable repeated in a set keeps its first place and its
//    last value, as when building. An InstanceID without variables is kept as an empty set.
//  - Reading a document in another or no namespace leaves the type as it was; a failed SetXMLText
//    empties the content but keeps the type.
//
// Creation goes through new (std::nothrow) only, so that "no document could be created" is a null pointer
// the caller can handle (and the runtime's fault injection can produce).
#ifndef MARLO_LAST_CHANGE_H_
#define MARLO_LAST_CHANGE_H_

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "dmr_cmn/Visibility.h"

namespace marlo {

class LastChange {
 public:
  // Document types, each with its event namespace.
  static constexpr int kTypeAVTransport = 0;         // urn:schemas-upnp-org:metadata-1-0/AVT/
  static constexpr int kTypeRenderingControl = 1;    // urn:schemas-upnp-org:metadata-1-0/RCS/

  // One InstanceID element with its variables (opaque to callers).
  struct VariableSet;

  LastChange() noexcept;
  ~LastChange();

  LastChange(const LastChange&) = delete;
  LastChange& operator=(const LastChange&) = delete;

  // Null when there is no memory (or fault injection says so).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // Chooses the document type (its namespace). Returns 0; kErrorInvalidArgument (-1998) for an unknown
  // type.
  int32_t SetType(int type);

  // Sets variable `name` of instance `instanceId` to `value`. `channel`, when not null, becomes the
  // element's channel attribute (RenderingControl's Volume channel="Master"); an AVTransport variable
  // passes null. Returns 0; kErrorInvalidArgument (-1998) for a null or empty name, a name that is not an
  // XML name, or a null value; kErrorFailure (-1999) when no type has been set; kErrorNoMemory (-1997).
  int32_t SetStateVariable(unsigned long instanceId, const char* name, const char* value,
                           const char* channel);

  // The document as XML text, or null when no type has been set or there is no memory. A document
  // without variables is the empty Event element. The text belongs to the document and stays valid until
  // the next change of the document.
  const char* GetXMLText();

  // Replaces the content with the variables of the document `xml`: the root element Event (in any or no
  // namespace; the AVT or RCS namespace also sets the type), its InstanceID children with their val
  // attribute, and each child element of an instance as a variable named by its local name with the value
  // of its val attribute (an element without val is skipped). Returns 0; kErrorInvalidArgument (-1998)
  // for null or malformed text or a root that is not Event (the content is then empty);
  // kErrorNoMemory (-1997).
  int32_t SetXMLText(const char* xml);

  // The index-th instance of the document, or null past the end.
  const VariableSet* GetVariableSet(int index) const;
  // The instance number of a set (0 for a null set).
  unsigned long GetInstanceId(const VariableSet* set) const;
  // Name, value and channel (null when none) of the index-th variable of `set`; null past the end or for
  // a null set.
  const char* GetVariableName(const VariableSet* set, int index) const;
  const char* GetVariableValue(const VariableSet* set, int index) const;
  const char* GetVariableChannel(const VariableSet* set, int index) const;

 private:
  struct Variable {
    std::string name;
    std::string value;
    std::string channel;
    bool hasChannel;
  };

 public:
  struct VariableSet {
    unsigned long instanceId;
    std::vector<Variable> variables;
  };

 private:
  static constexpr int kNoType = -1;

  // Rebuilds xml_ from type_ and sets_; throws std::bad_alloc.
  DMR_CMN_HIDDEN void BuildXmlText();
  // Reads the document `xml` into *sets and, when its namespace names a type, *type; returns 0 or
  // kErrorInvalidArgument. Throws std::bad_alloc.
  DMR_CMN_HIDDEN static int32_t ReadDocument(const char* xml, int* type, std::vector<VariableSet>* sets);

  int type_;                      // kTypeAVTransport, kTypeRenderingControl, or kNoType
  std::vector<VariableSet> sets_;
  std::string xml_;               // the text of the document while xmlValid_
  bool xmlValid_;
};

}  // namespace marlo

#endif  // MARLO_LAST_CHANGE_H_
