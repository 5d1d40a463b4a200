#include "tests/automation/hostile_values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace vellobar::tests {

namespace {

using Shapes = std::vector<HostileShape>;
using Make = std::function<void(HostileValue&, IDispatch*)>;

void set_type(VARIANT& value, int type) { V_VT(&value) = static_cast<VARTYPE>(type); }

bool is_number(int type) {
  return (type >= VT_I2 && type <= VT_DATE) || type == VT_BOOL || type == VT_ERROR ||
         (type >= VT_I1 && type <= VT_UINT);
}

/// An object that claims every interface and implements IDispatch only.
class Pretender final : public IDispatch {
 public:
  virtual ~Pretender() = default;

  STDMETHODIMP QueryInterface(REFIID, void** to) override { return *to = this, S_OK; }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_FAIL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return DISP_E_MEMBERNOTFOUND;
  }
};

IDispatch* stranger() {
  static ClientObject object;
  return &object;
}
IDispatch* pretender() {
  static Pretender object;
  return &object;
}

/// Makes the value the inner one. It is then the client's variable, which a call may give another content: the variable
/// owns what it holds.
void move_inside(HostileValue& made) {
  made.inner = made.value;
  made.string = nullptr;
  made.array = nullptr;
  const VARTYPE type = V_VT(&made.inner);
  const bool is_object = type == VT_DISPATCH || type == VT_UNKNOWN;
  if (is_object && V_UNKNOWN(&made.inner) != nullptr) V_UNKNOWN(&made.inner)->AddRef();
}

/// Adds a kind of VARIANT, and a reference to a VARIANT of that kind.
void add(Shapes& shapes, const std::string& name, const Make& make) {
  shapes.push_back({name, make});
  shapes.push_back({"reference to " + name, [make](HostileValue& made, IDispatch* called) {
                      make(made, called);
                      move_inside(made);
                      set_type(made.value, VT_BYREF | VT_VARIANT);
                      V_VARIANTREF(&made.value) = &made.inner;
                    }});
}

// What a VARIANT may hold, and numbers of types that it may not.
constexpr int kTypes[] = {VT_EMPTY,
                          VT_NULL,
                          VT_I2,
                          VT_I4,
                          VT_R4,
                          VT_R8,
                          VT_CY,
                          VT_DATE,
                          VT_BSTR,
                          VT_DISPATCH,
                          VT_ERROR,
                          VT_BOOL,
                          VT_VARIANT,
                          VT_UNKNOWN,
                          VT_DECIMAL,
                          15,
                          VT_I1,
                          VT_UI1,
                          VT_UI2,
                          VT_UI4,
                          VT_I8,
                          VT_UI8,
                          VT_INT,
                          VT_UINT,
                          VT_VOID,
                          VT_HRESULT,
                          VT_PTR,
                          VT_SAFEARRAY,
                          VT_CARRAY,
                          VT_USERDEFINED,
                          VT_LPSTR,
                          VT_LPWSTR,
                          VT_RECORD,
                          VT_INT_PTR,
                          VT_FILETIME,
                          VT_CLSID,
                          0x0FFF,
                          VT_VECTOR | VT_I4,
                          VT_RESERVED | VT_I4};

void add_types(Shapes& shapes) {
  for (int type : kTypes) {
    const std::string name = "type " + std::to_string(type);
    add(shapes, name, [type](HostileValue& made, IDispatch*) { set_type(made.value, type); });
    for (int as : {VT_BYREF | type, VT_ARRAY | type, VT_BYREF | VT_ARRAY | type}) {
      shapes.push_back(
          {"null as type " + std::to_string(as), [as](HostileValue& made, IDispatch*) { set_type(made.value, as); }});
    }
    shapes.push_back({name + " by reference", [type](HostileValue& made, IDispatch*) {
                        set_type(made.value, VT_BYREF | type);
                        V_BYREF(&made.value) = made.cell;
                      }});
    shapes.push_back({"reference to null array of " + name, [type](HostileValue& made, IDispatch*) {
                        set_type(made.value, VT_BYREF | VT_ARRAY | type);
                        V_ARRAYREF(&made.value) = &made.array;
                      }});
    if (!is_number(type)) continue;
    shapes.push_back({name + " of ones", [type](HostileValue& made, IDispatch*) {
                        set_type(made.value, type);
                        V_I8(&made.value) = -1;
                      }});
  }
}

void add_numbers(Shapes& shapes) {
  constexpr double kHuge = 1e300, kNot = std::numeric_limits<double>::quiet_NaN();
  for (double number : {kHuge, -kHuge, kNot, double{HUGE_VAL}, 32768.0, -32769.0, 2147483648.0}) {
    for (int type : {VT_R8, VT_DATE}) {
      shapes.push_back({"number " + std::to_string(number), [=](HostileValue& made, IDispatch*) {
                          set_type(made.value, type);
                          V_R8(&made.value) = number;
                        }});
    }
  }
  for (long number : {LONG_MIN, LONG_MAX, 32767L, 1L, 5L, DISP_E_PARAMNOTFOUND}) {
    for (int type : {VT_I4, VT_ERROR}) {
      shapes.push_back({"number " + std::to_string(number), [=](HostileValue& made, IDispatch*) {
                          set_type(made.value, type);
                          V_I4(&made.value) = number;
                        }});
    }
  }
  shapes.push_back({"largest decimal", [](HostileValue& made, IDispatch*) {
                      V_DECIMAL(&made.value).Hi32 = 0xFFFFFFFF;
                      V_DECIMAL(&made.value).Lo64 = ~0ULL;
                      set_type(made.value, VT_DECIMAL);
                    }});
}

void add_texts(Shapes& shapes) {
  const std::pair<const char*, std::wstring> kTexts[] = {
      {"empty text", L""},
      {"NULs", std::wstring(L"\0a\0b\0", 5)},
      {"high surrogate", L"\xD800"},
      {"low surrogate", L"a\xDC00z"},
      {"surrogates in the wrong order", L"\xDC00\xD800"},
      {"no character", L"\xFFFF\xFFFE"},
      {"number", L"-1"},
      {"large number", L"99999999999999999999"},
      {"long text", std::wstring(70000, L'a')},
      {"path out of the folder", L"no\\such\\folder\\file"},
      {"characters no file name has", L"a<b>c|d?e*f\"g"},
  };
  for (const auto& [name, text] : kTexts) {
    add(shapes, name, [text = text](HostileValue& made, IDispatch*) {
      made.string = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
      set_type(made.value, VT_BSTR);
      V_BSTR(&made.value) = made.string;
    });
    shapes.push_back({std::string(name) + " by reference", [text = text](HostileValue& made, IDispatch*) {
                        made.string = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
                        set_type(made.value, VT_BYREF | VT_BSTR);
                        V_BSTRREF(&made.value) = &made.string;
                      }});
  }
}

void add_arrays(Shapes& shapes) {
  const struct {
    const char* name;
    int type;
    unsigned rank;
    ULONG size;
    LONG lower;
  } kArrays[] = {{"bytes", VT_UI1, 1, 3, 0},           {"no bytes", VT_UI1, 1, 0, 0},
                 {"bytes from -5", VT_UI1, 1, 3, -5},  {"bytes of rank 2", VT_UI1, 2, 2, 0},
                 {"bytes of rank 3", VT_UI1, 3, 2, 1}, {"signed bytes", VT_I1, 1, 3, 0},
                 {"shorts", VT_I2, 1, 3, 0},           {"texts", VT_BSTR, 1, 2, 0},
                 {"variants", VT_VARIANT, 1, 2, 0},    {"objects", VT_DISPATCH, 1, 2, 0}};
  for (const auto& entry : kArrays) {
    const auto create = [entry](HostileValue& made) {
      std::vector<SAFEARRAYBOUND> bounds(entry.rank, SAFEARRAYBOUND{entry.size, entry.lower});
      made.array = SafeArrayCreate(static_cast<VARTYPE>(entry.type), entry.rank, bounds.data());
    };
    add(shapes, entry.name, [=](HostileValue& made, IDispatch*) {
      create(made);
      set_type(made.value, VT_ARRAY | entry.type);
      V_ARRAY(&made.value) = made.array;
    });
    // What the array says of itself and what the VARIANT says of it need not agree.
    for (int type : {entry.type, int{VT_UI1}, int{VT_BSTR}}) {
      shapes.push_back({std::string(entry.name) + " by reference as type " + std::to_string(type),
                        [=](HostileValue& made, IDispatch*) {
                          create(made);
                          set_type(made.value, VT_BYREF | VT_ARRAY | type);
                          V_ARRAYREF(&made.value) = &made.array;
                        }});
    }
  }
}

void add_objects(Shapes& shapes) {
  for (int type : {VT_DISPATCH, VT_UNKNOWN}) {
    const auto add_object = [&](const char* name, IDispatch* (*object)()) {
      add(shapes, name, [=](HostileValue& made, IDispatch*) {
        set_type(made.value, type);
        V_DISPATCH(&made.value) = object();
      });
    };
    add_object("stranger", stranger);
    add_object("pretender", pretender);
    add(shapes, "the object itself", [type](HostileValue& made, IDispatch* called) {
      set_type(made.value, type);
      V_DISPATCH(&made.value) = called;
    });
  }
  shapes.push_back({"reference to itself", [](HostileValue& made, IDispatch*) {
                      set_type(made.value, VT_BYREF | VT_VARIANT);
                      V_VARIANTREF(&made.value) = &made.value;
                    }});
}

Shapes make_shapes() {
  Shapes shapes;
  add_types(shapes);
  add_numbers(shapes);
  add_texts(shapes);
  add_arrays(shapes);
  add_objects(shapes);
  return shapes;
}

}  // namespace

HostileValue::~HostileValue() {
  VariantClear(&inner);
  SysFreeString(string);
  if (array != nullptr) SafeArrayDestroy(array);
}

const std::vector<HostileShape>& hostile_shapes() {
  static const Shapes shapes = make_shapes();
  return shapes;
}

std::vector<HostileShape> chief_hostile_shapes() {
  static constexpr std::string_view kChief[] = {"type 0",
                                                "type 8",
                                                "null as type 16392",
                                                "null as type 24588",
                                                "type 10",
                                                "NULs",
                                                "bytes",
                                                "bytes by reference as type 17",
                                                "stranger",
                                                "reference to itself"};
  Shapes chief;
  for (const HostileShape& shape : hostile_shapes()) {
    if (std::find(std::begin(kChief), std::end(kChief), shape.name) != std::end(kChief)) chief.push_back(shape);
  }
  return chief;
}

}  // namespace vellobar::tests
