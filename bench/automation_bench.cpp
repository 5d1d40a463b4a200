// What the automation surface adds to the work behind it. A late-bound read of a subject stands beside the same call on
// an object that does nothing but copy a text and is answered by the same type library; a read through the table of
// methods beside a virtual call that copies a text of that length; a walk over many messages beside a walk over few.
// Needs the DLL in its own folder, and neither registration nor a display. Prints the medians and whether the targets
// are met.
//
//   automation_bench
#include <ole2.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "automation/com_ptr.h"
#include "vellobar_automation.h"

namespace {

using vellobar::automation::ComPtr;
using vellobar::automation::query;

constexpr int kRounds = 15;
constexpr int kCalls = 100'000;
constexpr DISPID kSubject = 21;
constexpr std::size_t kSubjectSlot = 32;
constexpr double kWantedLateBound = 3, kWantedTable = 2;
// Per message, for eight times as many, which no longer fit the processor's caches; a walk that is not linear would
// cost eight times as much.
constexpr double kWantedWalk = 2;
constexpr const char* kText = "Minutes of the meeting on the third floor, second draft";

void check(HRESULT result) {
  if (FAILED(result)) throw std::runtime_error("a call failed with " + std::to_string(result));
}

double seconds() {
  LARGE_INTEGER frequency, now;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

std::string folder_of_this_program() {
  char path[MAX_PATH];
  const std::string file(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
  return file.substr(0, file.find_last_of('\\') + 1);
}

template <class Interface>
ComPtr<Interface> create(REFCLSID class_id) {
  static const HMODULE module = LoadLibraryA((folder_of_this_program() + "vellobar.dll").c_str());
  using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
  if (module == nullptr) throw std::runtime_error("the DLL is not beside this program");
  const auto get_class_object =
      reinterpret_cast<GetClassObject*>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  void* factory = nullptr;
  check(get_class_object(class_id, IID_IClassFactory, &factory));
  void* object = nullptr;
  check(ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(factory))
            ->CreateInstance(nullptr, __uuidof(Interface), &object));
  return ComPtr<Interface>::attach(static_cast<Interface*>(object));
}

/// An object with the table of methods of a message, in which the subject alone does something.
class Minimal {
 public:
  explicit Minimal(ComPtr<ITypeInfo> type) : type_(std::move(type)) {
    slots_.fill(reinterpret_cast<void*>(unused));
    slots_[6] = reinterpret_cast<void*>(invoke);
    slots_[kSubjectSlot] = reinterpret_cast<void*>(subject);
  }

  IvMessage* object() { return reinterpret_cast<IvMessage*>(this); }

 private:
  static HRESULT STDMETHODCALLTYPE unused(Minimal*) { return E_NOTIMPL; }
  static HRESULT STDMETHODCALLTYPE subject(Minimal* self, BSTR* to) {
    *to = SysAllocStringLen(self->text_.data(), static_cast<UINT>(self->text_.size()));
    return S_OK;
  }
  static HRESULT STDMETHODCALLTYPE invoke(Minimal* self, DISPID member, REFIID, LCID, WORD kind, DISPPARAMS* arguments,
                                          VARIANT* to, EXCEPINFO* exception, UINT* bad_argument) {
    return self->type_->Invoke(self, member, kind, arguments, to, exception, bad_argument);
  }

  void* const* table_ = slots_.data();
  std::array<void*, 65> slots_;
  ComPtr<ITypeInfo> type_;
  std::wstring text_{kText, kText + std::string(kText).size()};
};

void read_late_bound(IDispatch* message) {
  DISPPARAMS none{};
  VARIANT result;
  VariantInit(&result);
  check(
      message->Invoke(kSubject, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr));
  VariantClear(&result);
}

void read_through_table(IvMessage* message) {
  BSTR subject = nullptr;
  check(message->get_Subject(&subject));
  SysFreeString(subject);
}

double nanoseconds_a_call(const std::function<void()>& call) {
  const double start = seconds();
  for (int i = 0; i < kCalls; ++i) call();
  return (seconds() - start) / kCalls * 1e9;
}

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

bool print(const char* title, const char* unit, double ours, double other, double wanted) {
  const bool is_met = ours <= wanted * other;
  std::printf("%-34s %9.1f %s beside %9.1f, times %5.2f, wanted <= %.1f  %s\n", title, ours, unit, other, ours / other,
              wanted, is_met ? "met" : "MISSED");
  return is_met;
}

/// Each side in turn, so that both meet the same machine.
bool compare(const char* title, const std::function<void()>& ours, const std::function<void()>& other, double wanted) {
  std::vector<double> our_figures, other_figures;
  for (int round = 0; round < kRounds; ++round) {
    our_figures.push_back(nanoseconds_a_call(ours));
    other_figures.push_back(nanoseconds_a_call(other));
  }
  return print(title, "ns", median(our_figures), median(other_figures), wanted);
}

/// A mailbox in the temporary folder, removed at the end.
class Mailbox {
 public:
  explicit Mailbox(int messages) {
    char folder[MAX_PATH];
    GetTempPathA(MAX_PATH, folder);
    path_ = std::string(folder) + "automation_bench_" + std::to_string(GetCurrentProcessId()) + ".mbox";
    std::ofstream file(path_, std::ios::binary);
    for (int i = 0; i < messages; ++i) {
      file << "From ann@example.org Mon Jan  1 10:00:00 2024\r\nSubject: " << kText << "\r\n\r\ntext\r\n";
    }
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path_);
  }
  ~Mailbox() { std::remove(path_.c_str()); }
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  ComPtr<IVellobar> lock() const {
    const auto control = create<IVellobar>(CLSID_Vellobar);
    const BSTR path = SysAllocString(std::wstring(path_.begin(), path_.end()).c_str());
    check(control->put_Filename(path));
    SysFreeString(path);
    check(control->Lock());
    return control;
  }

 private:
  std::string path_;
};

ComPtr<IvMessages> messages_of(IVellobar* control) {
  ComPtr<IvMessages> messages;
  check(control->get_Messages(messages.receive()));
  return messages;
}

/// What `For Each` does, one item at a time.
int walk(IvMessages* messages) {
  ComPtr<IUnknown> unknown;
  check(messages->get__NewEnum(unknown.receive()));
  const auto items = query<IEnumVARIANT>(unknown.get());
  int count = 0;
  VARIANT item;
  VariantInit(&item);
  for (; items->Next(1, &item, nullptr) == S_OK; ++count) VariantClear(&item);
  return count;
}

double walk_nanoseconds_a_message(int messages) {
  const Mailbox mailbox(messages);
  const auto control = mailbox.lock();
  const auto collection = messages_of(control.get());
  std::vector<double> figures;
  for (int round = 0; round < kRounds; ++round) {
    const double start = seconds();
    if (walk(collection.get()) != messages) throw std::runtime_error("the walk missed messages");
    figures.push_back((seconds() - start) / messages * 1e9);
  }
  check(control->Unlock());
  return median(figures);
}

bool compare_reads() {
  const Mailbox mailbox(1);
  const auto control = mailbox.lock();
  ComPtr<IvMessage> message;
  check(messages_of(control.get())->get_Item(0, message.receive()));
  ComPtr<ITypeInfo> type;
  check(message->GetTypeInfo(0, 0, type.receive()));
  Minimal minimal(type);
  bool is_met = compare(
      "Subject late-bound", [&] { read_late_bound(message.get()); }, [&] { read_late_bound(minimal.object()); },
      kWantedLateBound);
  is_met &= compare(
      "Subject through the table", [&] { read_through_table(message.get()); },
      [&] { read_through_table(minimal.object()); }, kWantedTable);
  return is_met;
}

bool compare_walks() {
  const double few = walk_nanoseconds_a_message(12'500);
  for (int messages : {25'000, 50'000}) {
    std::printf("For Each over %6d messages       %9.1f ns a message\n", messages,
                walk_nanoseconds_a_message(messages));
  }
  return print("For Each over 100000, 12500", "ns", walk_nanoseconds_a_message(100'000), few, kWantedWalk);
}

}  // namespace

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  try {
    const bool is_met = compare_reads() & compare_walks();
    return is_met ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "automation_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
