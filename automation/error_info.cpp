#include "automation/error_info.h"

#include <ole2.h>

#include <exception>
#include <string>

#include "automation/class_table.h"
#include "automation/com_ptr.h"
#include "platform/code_page.h"
#include "vellobar_automation.h"

namespace vellobar::automation {

namespace {

struct ReporterEntry {
  Reporter reporter;
  const CLSID& source_class;
  const GUID& guid;
};

// The messages collection reports under the GUID of the attachment class; deliberate, held by the test
// `ErrorInformationTest.a_messages_collection_reports_under_the_guid_of_the_attachment_class`.
const ReporterEntry kReporters[] = {
    {Reporter::vellobar, CLSID_Vellobar, CLSID_Vellobar},
    {Reporter::message, CLSID_Message, CLSID_Message},
    {Reporter::messages, CLSID_Messages, CLSID_Attachment},
    {Reporter::attachment, CLSID_Attachment, CLSID_Attachment},
};

void fill(ErrorNumber number, const ReporterEntry& entry) {
  ComPtr<ICreateErrorInfo> information;
  if (FAILED(CreateErrorInfo(information.receive()))) return;
  std::u16string message = platform::widen(platform::kThreadCodePage, message_of(number));
  std::wstring source = class_entry(entry.source_class)->versioned_prog_id;
  information->SetDescription(reinterpret_cast<wchar_t*>(message.data()));
  information->SetSource(source.data());
  information->SetGUID(entry.guid);
  information->SetHelpContext(0);
  if (const auto finished = query<IErrorInfo>(information.get())) SetErrorInfo(0, finished.get());
}

}  // namespace

void set_error_information(ErrorNumber number, Reporter reporter) noexcept {
  clear_error_information();
  try {
    for (const ReporterEntry& entry : kReporters) {
      if (entry.reporter == reporter) fill(number, entry);
    }
  } catch (const std::exception&) {
    clear_error_information();
  }
}

void clear_error_information() noexcept { SetErrorInfo(0, nullptr); }

}  // namespace vellobar::automation
