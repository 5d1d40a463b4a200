// Every cell of the automation surface as clients rely on it, kept apart from the IDL so that no slip there goes
// unseen. Parameters are written as in an IDL; an enumeration member without a help string has an empty one.
#pragma once

#include <span>

namespace vellobar::tests {

enum class Kind { method, get, put };

struct Member {
  int slot;
  long identifier;
  Kind kind;
  const wchar_t* name;
  const wchar_t* parameters;
  const wchar_t* help;
};

struct Interface {
  const wchar_t* name;
  std::span<const Member> members;
};

struct EnumerationMember {
  const wchar_t* name;
  long value;
  const wchar_t* help;
};

struct Enumeration {
  const wchar_t* name;
  std::span<const EnumerationMember> members;
};

struct Class {
  const wchar_t* name;
  const wchar_t* default_interface;
  const wchar_t* help;
  const wchar_t* registry_description;
  const wchar_t* versioned_prog_id;
  const wchar_t* prog_id;
  const wchar_t* threading_model;
};

std::span<const Interface> interfaces();
std::span<const Enumeration> enumerations();
std::span<const Class> classes();

}  // namespace vellobar::tests
