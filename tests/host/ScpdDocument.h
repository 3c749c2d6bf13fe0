// ScpdDocument: an SCPD file as a control point reads it, parsed with libxml2 (no recovery, no network),
// for the tests that hold the documents on disk against the catalogue and the service objects.
#ifndef TESTS_HOST_SCPD_DOCUMENT_H_
#define TESTS_HOST_SCPD_DOCUMENT_H_

#include <string>
#include <vector>

struct ScpdArgument {
  std::string name;
  std::string direction;  // "in" or "out", as written
  std::string relatedStateVariable;
};

struct ScpdAction {
  std::string name;
  std::vector<ScpdArgument> arguments;

  // The names of the IN (or OUT) arguments, in document order.
  std::vector<std::string> InNames() const;
  std::vector<std::string> OutNames() const;
};

struct ScpdVariable {
  std::string name;
  std::string sendEvents;  // the attribute as written ("yes", "no")
  std::string dataType;
  std::vector<std::string> allowedValues;
  std::string minimum;  // "" when there is no allowedValueRange
  std::string maximum;
  std::string step;
};

struct ScpdDocument {
  std::string rootName;       // the document element's local name
  std::string rootNamespace;  // its namespace URI
  std::string specMajor;
  std::string specMinor;
  bool hasActionList = false;
  std::vector<ScpdAction> actions;
  std::vector<ScpdVariable> variables;

  const ScpdAction* FindAction(const std::string& name) const;
  const ScpdVariable* FindVariable(const std::string& name) const;
  // The names of the variables with sendEvents="yes", in document order.
  std::vector<std::string> EventedNames() const;
};

// Parses the SCPD at `path`. False, with libxml2's message in *error, when the file cannot be read or is
// not well-formed XML.
bool LoadScpd(const std::string& path, ScpdDocument* document, std::string* error);

// The SCPD of the service called `name` ("AVTransport") in the build's document root; a test failure when
// it does not load.
ScpdDocument LoadBuiltScpd(const std::string& name);

#endif  // TESTS_HOST_SCPD_DOCUMENT_H_
