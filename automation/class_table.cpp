#include "automation/class_table.h"

#include "automation/objects.h"
#include "vellobar_automation.h"

namespace vellobar::automation {

namespace {

constexpr const wchar_t* kApartment = L"Apartment";
constexpr const wchar_t* kBoth = L"both";

// The attachment classes are described without the letter that stands before the others; the type library has it.
const ClassEntry kClasses[kClassCount] = {
    {CLSID_Vellobar, IID_IVellobar, L"Vellobar Class", L"Quorvane.Vellobar.1", L"Quorvane.Vellobar", kApartment, true,
     new_vellobar},
    {CLSID_Message, IID_IvMessage, L"vMessage Class", L"Quorvane.Message.2", L"Quorvane.Message", kBoth, false,
     new_message},
    {CLSID_Messages, IID_IvMessages, L"vMessages Class", L"Quorvane.Messages.2", L"Quorvane.Messages", kBoth, false,
     new_messages},
    {CLSID_Header, IID_IvHeader, L"vHeader Class", L"Quorvane.Header.2", L"Quorvane.Header", kBoth, false, new_header},
    {CLSID_Headers, IID_IvHeaders, L"vHeaders Class", L"Quorvane.Headers.2", L"Quorvane.Headers", kBoth, false,
     new_headers},
    {CLSID_Attachment, IID_IvAttachment, L"Attachment Class", L"Quorvane.Attachment.2", L"Quorvane.Attachment", kBoth,
     false, new_attachment},
    {CLSID_Attachments, IID_IvAttachments, L"Attachments Class", L"Quorvane.Attachments.2", L"Quorvane.Attachments",
     kBoth, false, new_attachments},
    {CLSID_Decoder, IID_IvDecoder, L"vDecoder Class", L"Quorvane.Decoder.2", L"Quorvane.Decoder", kBoth, false,
     new_decoder},
    {CLSID_Encoder, IID_IvEncoder, L"vEncoder Class", L"Quorvane.Encoder.2", L"Quorvane.Encoder", kBoth, false,
     new_encoder},
};

}  // namespace

std::span<const ClassEntry, kClassCount> class_table() { return kClasses; }

const ClassEntry* class_entry(REFCLSID class_id) {
  for (const ClassEntry& entry : kClasses) {
    if (entry.class_id == class_id) return &entry;
  }
  return nullptr;
}

std::size_t class_row_of_interface(REFIID interface_id) {
  std::size_t row = 0;
  while (row < kClassCount && kClasses[row].interface_id != interface_id) ++row;
  return row;
}

}  // namespace vellobar::automation
