// All that a program needs to use the library: `#include <vellobar/vellobar.h>`.
#pragma once

#include "api/content.h"
#include "api/dates.h"
#include "api/paths.h"
#include "api/utf8.h"
#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "codecs/decoder.h"
#include "codecs/encoder.h"
#include "compose/composition.h"
#include "errors/error.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"

namespace vellobar {

using codecs::AttachmentEncoding;
using codecs::CDecoder;
using codecs::CEncoder;

}  // namespace vellobar
