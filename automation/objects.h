// The automation objects by the core objects they stand for. `wrap` finds the living one or makes it; the `new_`
// functions make objects that stand alone, for the class factories.
#pragma once

#include <memory>

#include "automation/com_ptr.h"
#include "vellobar_automation.h"

namespace vellobar {
class CAttachment;
class CAttachments;
class CHeader;
class CHeaders;
class CMessage;
class CMessages;
}  // namespace vellobar

namespace vellobar::automation {

ComPtr<IvMessage> wrap(const std::shared_ptr<CMessage>& message);
ComPtr<IvMessages> wrap(const std::shared_ptr<CMessages>& messages);
ComPtr<IvHeader> wrap(const std::shared_ptr<CHeader>& header);
ComPtr<IvHeaders> wrap(const std::shared_ptr<CHeaders>& headers);
ComPtr<IvAttachment> wrap(const std::shared_ptr<CAttachment>& attachment);
ComPtr<IvAttachments> wrap(const std::shared_ptr<CAttachments>& attachments);

/// The core object behind a client's object; null when it is not one of ours.
std::shared_ptr<CMessage> message_behind(IUnknown* object);
std::shared_ptr<CHeader> header_behind(IUnknown* object);

ComPtr<IUnknown> new_vellobar();
ComPtr<IUnknown> new_message();
ComPtr<IUnknown> new_messages();
ComPtr<IUnknown> new_header();
ComPtr<IUnknown> new_headers();
ComPtr<IUnknown> new_attachment();
ComPtr<IUnknown> new_attachments();
ComPtr<IUnknown> new_decoder();
ComPtr<IUnknown> new_encoder();

}  // namespace vellobar::automation
