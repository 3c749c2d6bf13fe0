#include "SoapRequestReader.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "marlo/ActionRequest.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kSoapEnvelopeNamespace = "http://schemas.xmlsoap.org/soap/envelope/";

// XML_PARSE_NONET: nothing is ever fetched. No XML_PARSE_NOENT, DTDLOAD, DTDATTR or RECOVER: no entity is
// substituted, no DTD loaded, and a body that is not well-formed is refused instead of repaired.
// NOERROR/NOWARNING: libxml2 prints nothing; the reason goes back to the caller instead.
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// The request as read, kept apart from the caller's request until the whole body has been accepted.
struct ReadRequest {
  std::string serviceType;
  std::string actionName;
  std::vector<std::pair<std::string, std::string>> arguments;
};

struct ParserContextFree {
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
struct DocumentFree {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

// What the document-type hook saw, reached through the parser context's _private.
struct ParseState {
  bool sawDocumentType = false;
};

// Called by libxml2 as soon as it has read "<!DOCTYPE name ...", before any of the internal subset: the
// parse stops there, so no entity declaration of a hostile body is ever read.
void RefuseDocumentType(void* userData, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* context = static_cast<xmlParserCtxt*>(userData);
  static_cast<ParseState*>(context->_private)->sawDocumentType = true;
  xmlStopParser(context);
}

// A parser context kept by each thread from one request to the next: making and freeing one costs about a
// sixth of what reading a whole control request costs. libxml2 resets it before every parse (input,
// state, last error, well-formedness); what a reset keeps is the name dictionary and the parser's stacks,
// which only grow. So a context is kept only after an ordinary body, and given up once its dictionary holds
// more names than any honest sequence of requests brings: a hostile client sending new names in every
// request cannot make a thread hold more than that.
class ReusedParserContext {
 public:
  explicit ReusedParserContext(std::size_t length) : length_(length) {
    if (kept_ == nullptr) {
      kept_.reset(xmlNewParserCtxt());
      if (kept_ == nullptr || kept_->sax == nullptr) {
        kept_.reset();
        throw std::bad_alloc();
      }
      kept_->sax->internalSubset = RefuseDocumentType;
    }
  }
  ~ReusedParserContext() {
    if (length_ > kKeepAfterBodyBytes || kept_->dict == nullptr || xmlDictSize(kept_->dict) > kKeepUpToNames)
      kept_.reset();
  }
  ReusedParserContext(const ReusedParserContext&) = delete;
  ReusedParserContext& operator=(const ReusedParserContext&) = delete;

  xmlParserCtxt* Get() const { return kept_.get(); }

 private:
  static constexpr std::size_t kKeepAfterBodyBytes = 64 * 1024;
  static constexpr int kKeepUpToNames = 512;
  static thread_local std::unique_ptr<xmlParserCtxt, ParserContextFree> kept_;
  std::size_t length_;
};

thread_local std::unique_ptr<xmlParserCtxt, ParserContextFree> ReusedParserContext::kept_;

// libxml2 sets up its global state lazily and not thread-safely; doing it once, under the guarantee of a
// function-local static, lets several threads read requests at once.
void SetUpParserOnce() {
  static const bool setUp = (xmlInitParser(), true);
  (void)setUp;
}

bool IsBlank(const xmlChar* text) {
  if (text == nullptr) return true;
  for (; *text != '\0'; ++text) {
    if (*text != ' ' && *text != '\t' && *text != '\r' && *text != '\n') return false;
  }
  return true;
}

const char* Name(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

bool IsSoapElement(const xmlNode* node, const char* localName) {
  return node->type == XML_ELEMENT_NODE && std::strcmp(Name(node), localName) == 0 && node->ns != nullptr &&
         node->ns->href != nullptr &&
         std::strcmp(reinterpret_cast<const char*>(node->ns->href), kSoapEnvelopeNamespace) == 0;
}

// Comments and processing instructions carry nothing, and whitespace between elements is layout.
bool IsIgnorable(const xmlNode* node) {
  return node->type == XML_COMMENT_NODE || node->type == XML_PI_NODE ||
         (node->type == XML_TEXT_NODE && IsBlank(node->content));
}

// The element children of `parent`, in order, skipping what is ignorable. Text that is not blank ends the
// walk with a refusal: it has no place between these elements.
class ElementWalk {
 public:
  explicit ElementWalk(const xmlNode* parent) : parent_(parent), next_(parent->children) {}

  // Stores the next element in *element (null at the end) and returns true; false, with *reason, for text.
  bool Next(const xmlNode** element, std::string* reason) {
    for (; next_ != nullptr; next_ = next_->next) {
      if (IsIgnorable(next_)) continue;
      if (next_->type != XML_ELEMENT_NODE) {
        *reason = std::string("unexpected text in <") + Name(parent_) + ">";
        return false;
      }
      *element = next_;
      next_ = next_->next;
      return true;
    }
    *element = nullptr;
    return true;
  }

 private:
  const xmlNode* parent_;
  const xmlNode* next_;
};

// False for a tree that nests elements deeper than HOST_kMaxSoapRequestDepth. Walks without recursion.
bool DepthIsWithinBound(const xmlNode* root) {
  int depth = 1;
  const xmlNode* node = root;
  for (;;) {
    if (node->type == XML_ELEMENT_NODE && depth > HOST_kMaxSoapRequestDepth) return false;
    if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
      node = node->children;
      ++depth;
      continue;
    }
    while (node != root && node->next == nullptr) {
      node = node->parent;
      --depth;
    }
    if (node == root) return true;
    node = node->next;
  }
}

// An argument's value: its text and CDATA children concatenated. An element inside an argument is refused:
// an argument is a simple value, and a control point that sends structure sent something else.
bool ReadArgumentValue(const xmlNode* argument, std::string* value, std::string* reason) {
  for (const xmlNode* child = argument->children; child != nullptr; child = child->next) {
    switch (child->type) {
      case XML_TEXT_NODE:
      case XML_CDATA_SECTION_NODE:
        if (child->content != nullptr) value->append(reinterpret_cast<const char*>(child->content));
        break;
      case XML_COMMENT_NODE:
      case XML_PI_NODE:
        break;
      default:
        *reason = std::string("argument <") + Name(argument) +
                  (child->type == XML_ELEMENT_NODE ? "> holds elements" : "> holds an unexpected node");
        return false;
    }
  }
  return true;
}

bool ReadAction(const xmlNode* action, ReadRequest* read, std::string* reason) {
  if (action->ns == nullptr || action->ns->href == nullptr || action->ns->href[0] == '\0') {
    *reason = std::string("action <") + Name(action) + "> has no namespace (its service type)";
    return false;
  }
  read->serviceType = reinterpret_cast<const char*>(action->ns->href);
  read->actionName = Name(action);
  ElementWalk arguments(action);
  const xmlNode* argument;
  while (arguments.Next(&argument, reason)) {
    if (argument == nullptr) return true;
    std::string value;
    if (!ReadArgumentValue(argument, &value, reason)) return false;
    read->arguments.emplace_back(Name(argument), std::move(value));
  }
  return false;
}

bool ReadEnvelope(const xmlDoc* document, ReadRequest* read, std::string* reason) {
  const xmlNode* envelope = xmlDocGetRootElement(document);
  if (envelope == nullptr || !IsSoapElement(envelope, "Envelope")) {
    *reason = "no SOAP Envelope";
    return false;
  }
  if (!DepthIsWithinBound(envelope)) {
    *reason = "elements nested deeper than " + std::to_string(HOST_kMaxSoapRequestDepth);
    return false;
  }

  // An optional Header, the Body, nothing after it.
  ElementWalk children(envelope);
  const xmlNode* child;
  if (!children.Next(&child, reason)) return false;
  if (child != nullptr && IsSoapElement(child, "Header") && !children.Next(&child, reason)) return false;
  if (child == nullptr || !IsSoapElement(child, "Body")) {
    *reason =
        child == nullptr ? "no SOAP Body" : std::string("unexpected <") + Name(child) + "> in the Envelope";
    return false;
  }
  const xmlNode* body = child;
  if (!children.Next(&child, reason)) return false;
  if (child != nullptr) {
    *reason = std::string("unexpected <") + Name(child) + "> after the Body";
    return false;
  }

  ElementWalk actions(body);
  const xmlNode* action;
  if (!actions.Next(&action, reason)) return false;
  if (action == nullptr) {
    *reason = "no action in the Body";
    return false;
  }
  const xmlNode* second;
  if (!actions.Next(&second, reason)) return false;
  if (second != nullptr) {
    *reason = "more than one action in the Body";
    return false;
  }
  return ReadAction(action, read, reason);
}

// libxml2's message for the last error of the parse, "line <n>: <message>", without its line end.
std::string LastErrorText(xmlParserCtxt* context) {
  const xmlError* error = xmlCtxtGetLastError(context);
  if (error == nullptr || error->message == nullptr) return "no details";
  std::string text = "line " + std::to_string(error->line) + ": " + error->message;
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  return text;
}

// Parses and reads the body into *read. False, with *reason, for a body refused. Throws std::bad_alloc when
// there is no memory (libxml2 running out of memory while parsing refuses the body instead).
bool ReadBody(const char* body, std::size_t length, ReadRequest* read, std::string* reason) {
  if (length == 0) {
    *reason = "empty body";
    return false;
  }
  if (length > HOST_kMaxSoapRequestBytes) {
    *reason = "body of " + std::to_string(length) + " bytes is over the limit of " +
              std::to_string(HOST_kMaxSoapRequestBytes);
    return false;
  }
  // XML forbids U+0000 anywhere; refusing it here says so plainly.
  if (std::memchr(body, '\0', length) != nullptr) {
    *reason = "body holds a NUL byte";
    return false;
  }

  SetUpParserOnce();
  ReusedParserContext reused(length);
  xmlParserCtxt* context = reused.Get();
  ParseState state;
  context->_private = &state;

  const std::unique_ptr<xmlDoc, DocumentFree> document(
      xmlCtxtReadMemory(context, body, static_cast<int>(length), nullptr, nullptr, kParseOptions));
  context->_private = nullptr;
  if (state.sawDocumentType || (document != nullptr && document->intSubset != nullptr)) {
    *reason = "document type declaration (DTD) refused";
    return false;
  }
  if (document == nullptr || !context->wellFormed) {
    *reason = "not well-formed XML (" + LastErrorText(context) + ")";
    return false;
  }
  // An undeclared prefix is only a namespace error to libxml2, which then keeps the element's name whole.
  if (!context->nsWellFormed) {
    *reason = "namespace error (" + LastErrorText(context) + ")";
    return false;
  }
  return ReadEnvelope(document.get(), read, reason);
}

}  // namespace

int32_t HOST_ReadSoapRequest(const char* body, std::size_t length, marlo::ActionRequest* request,
                             std::string* reason) {
  std::string ignored;
  std::string* why = reason != nullptr ? reason : &ignored;
  if (body == nullptr || request == nullptr) {
    why->assign(body == nullptr ? "no body" : "no request to fill");
    return marlo::kErrorInvalidArgument;
  }
  static_assert(HOST_kMaxSoapRequestBytes <= static_cast<std::size_t>(INT_MAX),
                "libxml2 takes an int length");

  ReadRequest read;
  std::string refusal;
  try {
    if (!ReadBody(body, length, &read, &refusal)) {
      why->swap(refusal);
      return marlo::kErrorInvalidArgument;
    }
  } catch (const std::bad_alloc&) {
    why->assign("no memory");
    return marlo::kErrorNoMemory;
  }

  int32_t result = request->SetServiceType(read.serviceType.c_str());
  if (result == marlo::kOk) result = request->SetActionName(read.actionName.c_str());
  for (std::size_t i = 0; result == marlo::kOk && i < read.arguments.size(); ++i) {
    result = request->AddArgument(read.arguments[i].first.c_str(), read.arguments[i].second.c_str());
  }
  if (result != marlo::kOk) why->assign("no memory");
  return result;
}
