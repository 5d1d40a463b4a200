#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

using enum Kind;

const Member kIvAttachment[] = {
    {7, 1, get, L"Name", L"[out, retval] BSTR* pVal", L"Holds filename of the attachment."},
    {8, 1, put, L"Name", L"[in] BSTR value", L"Holds filename of the attachment."},
    {9, 2, get, L"Type", L"[out, retval] BSTR* pVal", L"Holds type of the attachment."},
    {10, 2, put, L"Type", L"[in] BSTR value", L"Holds type of the attachment."},
    {11, 3, get, L"Encoding", L"[out, retval] AttachmentEncodingsEnum* pVal",
     L"Holds encoding type of the attachment."},
    {12, 3, put, L"Encoding", L"[in] AttachmentEncodingsEnum value", L"Holds encoding type of the attachment."},
    {13, 4, method, L"Save", L"[in, optional] VARIANT Filename", L"Stores attachment to file on disk."},
    {14, 5, get, L"Part", L"[out, retval] IvMessage** pVal",
     L"Returns part of the message that holds this attachment."},
    {15, 6, get, L"Size", L"[out, retval] long* pVal", L"Returns size of the attachment, prior to decoding."},
};

const Member kIvMessage[] = {
    {7, 1, get, L"Body", L"[out, retval] BSTR* pVal", L"Holds complete body of message, including headers."},
    {8, 1, put, L"Body", L"[in] BSTR value", L"Holds complete body of message, including headers."},
    {9, 2, get, L"StartPosition", L"[out, retval] long* pVal", L"Holds starting position of message in mailbox."},
    {10, 3, get, L"EndPosition", L"[out, retval] long* pVal", L"Holds ending position of message in mailbox."},
    {11, 4, get, L"Size", L"[out, retval] long* pVal", L"Holds size of message text, in bytes."},
    {12, 5, get, L"Tag", L"[out, retval] VARIANT* pVal", L"Tag for miscellaneous use."},
    {13, 5, put, L"Tag", L"[in] VARIANT value", L"Tag for miscellaneous use."},
    {14, 6, get, L"Index", L"[out, retval] short* pVal", L"Holds index of the message in mailbox."},
    {15, 7, method, L"Save", L"BSTR Filename, [in, optional] VARIANT Append", L"Copies message to file on disk."},
    {16, 8, get, L"Text", L"[out, retval] BSTR* pVal", L"Holds body (without headers)."},
    {17, 8, put, L"Text", L"[in] BSTR value", L"Holds body (without headers)."},
    {18, 9, get, L"Bytes", L"[out, retval] long* pVal", L"Holds total number of bytes in the message."},
    {19, 10, get, L"Lines", L"[out, retval] long* pVal", L"Holds total number of lines in the message."},
    {20, 11, method, L"Load", L"", L"Loads complete message to memory."},
    {21, 12, method, L"Unload", L"", L"Unloads message from memory."},
    {22, 13, get, L"Headers", L"[out, retval] IvHeaders** pVal", L"References collection of headers for the message."},
    {23, 14, get, L"MailInfo", L"[out, retval] BSTR* pVal", L"Holds info about sender of the message."},
    {24, 14, put, L"MailInfo", L"[in] BSTR value", L"Holds info about sender of the message."},
    {25, 15, get, L"Parts", L"[out, retval] IvMessages** pVal", L"References collection of parts for the message."},
    {26, 16, get, L"Attachments", L"[out, retval] IvAttachments** pVal",
     L"References collection of attachments for the message."},
    {27, 17, get, L"Changed", L"[out, retval] VARIANT_BOOL* pVal",
     L"Determines if application changed message, or it is still intact."},
    {28, 18, get, L"DecodedText", L"AttachmentEncodingsEnum EncodedAs, [out, retval] BSTR* pVal",
     L"Holds decoded body (without headers), with defined encoding type."},
    {29, 19, method, L"Peek", L"BSTR Filename", L"Loads message partially for fast access."},
    {30, 20, get, L"From", L"[out, retval] BSTR* pVal", L"Holds sender of the message."},
    {31, 20, put, L"From", L"[in] BSTR value", L"Holds sender of the message."},
    {32, 21, get, L"Subject", L"[out, retval] BSTR* pVal", L"Holds subject of the message."},
    {33, 21, put, L"Subject", L"[in] BSTR value", L"Holds subject of the message."},
    {34, 22, get, L"CC", L"[out, retval] BSTR* pVal", L"Holds carbon copy recipients."},
    {35, 22, put, L"CC", L"[in] BSTR value", L"Holds carbon copy recipients."},
    {36, 23, get, L"BCC", L"[out, retval] BSTR* pVal", L"Holds blind carbon copy recipients."},
    {37, 23, put, L"BCC", L"[in] BSTR value", L"Holds blind carbon copy recipients."},
    {38, 24, get, L"ContentDescription", L"[out, retval] BSTR* pVal", L"Holds Content-Description header."},
    {39, 24, put, L"ContentDescription", L"[in] BSTR value", L"Holds Content-Description header."},
    {40, 25, get, L"ContentDisposition", L"[out, retval] BSTR* pVal", L"Holds Content-Disposition header."},
    {41, 25, put, L"ContentDisposition", L"[in] BSTR value", L"Holds Content-Disposition header."},
    {42, 26, get, L"ContentID", L"[out, retval] BSTR* pVal", L"Holds Content-ID header."},
    {43, 26, put, L"ContentID", L"[in] BSTR value", L"Holds Content-ID header."},
    {44, 29, get, L"ContentTransferEncoding", L"[out, retval] BSTR* pVal", L"Holds Content-Transfer-Encoding header."},
    {45, 29, put, L"ContentTransferEncoding", L"[in] BSTR value", L"Holds Content-Transfer-Encoding header."},
    {46, 30, get, L"ContentType", L"[out, retval] BSTR* pVal", L"Holds Content-Type header."},
    {47, 30, put, L"ContentType", L"[in] BSTR value", L"Holds Content-Type header."},
    {48, 31, get, L"Date", L"[out, retval] DATE* pVal", L"Holds message Date, if available."},
    {49, 31, put, L"Date", L"[in] DATE value", L"Holds message Date, if available."},
    {50, 32, get, L"MessageID", L"[out, retval] BSTR* pVal", L"Holds Message-ID header."},
    {51, 32, put, L"MessageID", L"[in] BSTR value", L"Holds Message-ID header."},
    {52, 33, get, L"MIMEVersion", L"[out, retval] BSTR* pVal", L"Holds MIME-Version header."},
    {53, 33, put, L"MIMEVersion", L"[in] BSTR value", L"Holds MIME-Version header."},
    {54, 34, get, L"PartsBoundary", L"[out, retval] BSTR* pVal", L"Holds boundary line used to split message parts."},
    {55, 35, get, L"To", L"[out, retval] BSTR* pVal", L"Holds recipient of the message."},
    {56, 35, put, L"To", L"[in] BSTR value", L"Holds recipient of the message."},
    {57, 36, get, L"PlainText", L"[out, retval] BSTR* pVal", L"Returns text/plain part of the message."},
    {58, 37, get, L"HTMLText", L"[out, retval] BSTR* pVal", L"Returns text/html part of the message."},
    {59, 38, get, L"FromName", L"[out, retval] BSTR* pVal", L"Returns Name of the sender, if found."},
    {60, 39, get, L"FromEmail", L"[out, retval] BSTR* pVal", L"Returns Email of the sender, if found."},
    {61, 40, get, L"ToName", L"[out, retval] BSTR* pVal", L"Returns Name of the recipient, if found."},
    {62, 41, get, L"ToEmail", L"[out, retval] BSTR* pVal", L"Returns Email of the recipiend, if found."},
    {63, 42, get, L"CharSet", L"[out, retval] BSTR* pVal", L"Holds message charset"},
    {64, 42, put, L"CharSet", L"[in] BSTR value", L"Holds message charset"},
};

const Member kIvHeaders[] = {
    {7, 0, get, L"Item", L"VARIANT Index, [out, retval] IvHeader** pVal",
     L"References specific header in the collection."},
    {8, 4, get, L"Count", L"[out, retval] short* pVal", L"Returns total number of headers in the collection."},
    {9, 5, method, L"ToString", L"[out, retval] BSTR* str", L"Returns string expression containing all headers."},
    {10, 1, method, L"Add", L"[in] BSTR Name, [in, optional] VARIANT Value, [out, retval] IvHeader** hdr",
     L"Adds new header to the collection."},
    {11, 2, method, L"Remove", L"[in] VARIANT Index", L"Removes header from the collection."},
    {12, 3, method, L"RemoveAll", L"", L"Removes all headers from the collection."},
    {13, -4, get, L"_NewEnum", L"[out, retval] IUnknown** pVal", L"Enumerator"},
    {14, 6, method, L"Exists", L"[in] VARIANT Index, [out, retval] VARIANT_BOOL* ret", L"Tests if header exists."},
    {15, 7, method, L"FromString", L"BSTR HeadersData", L"Imports headers from string variable."},
};

const Member kIvHeader[] = {
    {7, 1, get, L"Name", L"[out, retval] BSTR* pVal", L"Holds name of the header."},
    {8, 1, put, L"Name", L"[in] BSTR value", L"Holds name of the header."},
    {9, 2, get, L"Value", L"[out, retval] BSTR* pVal", L"Holds value of the header."},
    {10, 2, put, L"Value", L"[in] BSTR value", L"Holds value of the header."},
    {11, 0, method, L"ToString", L"[out, retval] BSTR* str",
     L"Returns string expression containing name and value of the header."},
};

const Member kIvMessages[] = {
    {7, 1, get, L"Count", L"[out, retval] short* pVal", L"Returns total number of messages in mailbox file."},
    {8, 0, get, L"Item", L"short Index, [out, retval] IvMessage** pVal", L"References specific message in mailbox."},
    {9, 2, method, L"Add", L"[in, optional] VARIANT Filename, [out, retval] IvMessage** result",
     L"Adds new message to mailbox."},
    {10, 3, method, L"Remove", L"IvMessage* Message", L"Removes message from mailbox."},
    {11, 4, method, L"RemoveAll", L"", L"Removes all messages from mailbox."},
    {12, -4, get, L"_NewEnum", L"[out, retval] IUnknown** pVal", L"Enumerator"},
};

const Member kIvAttachments[] = {
    {7, 1, get, L"Count", L"[out, retval] short* pVal", L"Returns total number of attachments in the message."},
    {8, 0, get, L"Item", L"short Index, [out, retval] IvAttachment** pVal",
     L"References specific attachment in the collection."},
    {9, 2, method, L"Add", L"[in] BSTR Filename, [in, optional] VARIANT Encoding, [out, retval] IvMessage** result",
     L"Adds new attachment to the message."},
    {10, 3, get, L"ScanText", L"[out, retval] VARIANT_BOOL* pVal",
     L"Determines if email text is scanned for UUEncoded attachments."},
    {11, 3, put, L"ScanText", L"[in] VARIANT_BOOL value",
     L"Determines if email text is scanned for UUEncoded attachments."},
    {12, -4, get, L"_NewEnum", L"[out, retval] IUnknown** pVal", L"Enumerator"},
};

const Member kIvDecoder[] = {
    {7, 1, method, L"Base64", L"BSTR InFile, BSTR OutFile", L"Decodes file encoded with Base64 encoding."},
    {8, 2, method, L"Uudecode", L"BSTR InFile, BSTR OutFile", L"Decodes file encoded with UU encoding."},
    {9, 3, method, L"QuotedPrintable", L"BSTR InFile, BSTR OutFile",
     L"Decodes file encoded with Quoted-Printable encoding."},
    {10, 4, method, L"BinHex4", L"BSTR InFile, BSTR OutFile", L"Decodes file encoded with BinHex4 encoding."},
    {11, 5, method, L"Base64Data", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Decodes byte array encoded with Base64 encoding."},
    {12, 6, method, L"QuotedPrintableData", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Decodes byte array encoded with Quoted-Printable encoding."},
    {13, 7, method, L"UudecodeData", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Decodes byte array encoded with UU encoding."},
    {14, 8, method, L"Base64Text", L"BSTR InText, [out, retval] BSTR* OutText",
     L"Decodes text encoded with Base64 encoding."},
    {15, 9, method, L"UudecodeText", L"BSTR InText, [out, retval] BSTR* OutText",
     L"Decodes text encoded with UU encoding."},
    {16, 10, method, L"QuotedPrintableText", L"BSTR InText, [out, retval] BSTR* OutText",
     L"Decodes text encoded with Quoted-Printable encoding."},
};

const Member kIvEncoder[] = {
    {7, 1, method, L"Base64", L"BSTR InFile, BSTR OutFile", L"Encodes file using Base64 encoding."},
    {8, 2, method, L"Uuencode", L"BSTR InFile, BSTR OutFile", L"Encodes file using UU encoding."},
    {9, 3, method, L"QuotedPrintable", L"BSTR InFile, BSTR OutFile", L"Encodes file using Quoted-Printable encoding."},
    {10, 4, method, L"BinHex4", L"BSTR InFile, BSTR OutFile", L"Encodes file using BinHex4 encoding."},
    {11, 5, method, L"Base64Data", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Encodes byte array using Base64 encoding."},
    {12, 6, method, L"QuotedPrintableData", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Encodes byte array using Quoted-Printable encoding."},
    {13, 7, method, L"UuencodeData", L"SAFEARRAY(unsigned char)* InData, SAFEARRAY(unsigned char)* OutData",
     L"Encodes byte array using UU encoding."},
    {14, 8, method, L"Base64Text", L"BSTR InText, [out, retval] BSTR* OutText", L"Encodes text using Base64 encoding."},
    {15, 9, method, L"UuencodeText", L"BSTR InText, [out, retval] BSTR* OutText", L"Encodes text using UU encoding."},
    {16, 10, method, L"QuotedPrintableText", L"BSTR InText, [out, retval] BSTR* OutText",
     L"Encodes text using Quoted-Printable encoding."},
};

const Member kIVellobar[] = {
    {7, 0, get, L"Filename", L"[out, retval] BSTR* pVal", L"Holds filename of mailbox file."},
    {8, 0, put, L"Filename", L"[in] BSTR value", L"Holds filename of mailbox file."},
    {9, 2, get, L"Messages", L"[out, retval] IvMessages** pVal",
     L"Reference to collection of messages in current mailbox."},
    {10, 1, get, L"AutoUpdate", L"[out, retval] VARIANT_BOOL* pVal",
     L"Determines if all changes will be automatically updated."},
    {11, 1, put, L"AutoUpdate", L"[in] VARIANT_BOOL value",
     L"Determines if all changes will be automatically updated."},
    {12, 5, method, L"Update", L"", L"Updates mailbox with latest changes."},
    {13, 3, method, L"Lock", L"", L"Opens mailbox and locks it."},
    {14, 4, method, L"Unlock", L"", L"Closes mailbox and unlocks it."},
    {15, 8, get, L"Version", L"[out, retval] BSTR* pVal", L"Holds version information."},
    {16, 7, get, L"Changed", L"[out, retval] VARIANT_BOOL* pVal", L"Determines if mailbox is changed by application."},
    {17, -552, method, L"About", L"", L"Displays about box."},
    {18, 9, method, L"CreateSimpleMessage", L"BSTR SaveAs, BSTR From, BSTR To, BSTR Subject, BSTR Text",
     L"Creates simple message."},
    {19, 10, method, L"CreateTextHtmlMessage",
     L"BSTR SaveAs, BSTR From, BSTR To, BSTR Subject, BSTR PlainText, BSTR HTMLText", L"Creates multipart message."},
    {20, 11, method, L"CreateSimpleAttachmentMessage",
     L"BSTR SaveAs, BSTR From, BSTR To, BSTR Subject, BSTR Text, BSTR Attachment",
     L"Creates simple message with attachment."},
    {21, 12, method, L"CreateTextHtmlAttachmentMessage",
     L"BSTR SaveAs, BSTR From, BSTR To, BSTR Subject, BSTR PlainText, BSTR HTMLText, BSTR Attachment",
     L"Creates multipart message with attachment."},
    {22, 13, get, L"Language", L"[out, retval] LanguageEnum* pVal", L"Determines language for error messages."},
    {23, 13, put, L"Language", L"[in] LanguageEnum value", L"Determines language for error messages."},
    {24, 14, get, L"CharSet", L"[out, retval] Charsets* pVal", L"Character set to use for text conversion."},
    {25, 14, put, L"CharSet", L"[in] Charsets value", L"Character set to use for text conversion."},
};

const EnumerationMember kAttachmentEncodingsEnum[] = {
    {L"encUNKNOWN", 0, L"unknown"},   {L"encBASE64", 1, L"BASE64 encoding"},           {L"encBINHEX4", 2, L"BINHEX4"},
    {L"encUUENCODE", 3, L"UUENCODE"}, {L"encQUOTEDPRINTABLE", 4, L"quoted-printable"}, {L"enc7BIT", 5, L"7bit"},
};

const EnumerationMember kLanguageEnum[] = {
    {L"lngEnglish", 0, L"English language."},
    {L"lngGerman", 1031, L"German language."},
    {L"lngCroatian", 1050, L"Croatian language."},
};

const EnumerationMember kCharsets[] = {
    {L"ActiveCP", 0, L""},      {L"ASCII", 20127, L""},     {L"CP437", 437, L""},        {L"CP720", 720, L""},
    {L"CP737", 737, L""},       {L"CP775", 775, L""},       {L"CP850", 850, L""},        {L"CP852", 852, L""},
    {L"CP855", 855, L""},       {L"CP857", 857, L""},       {L"CP858", 858, L""},        {L"CP862", 862, L""},
    {L"CP866", 866, L""},       {L"CP874", 874, L""},       {L"CP932", 932, L""},        {L"CP1125", 1125, L""},
    {L"CP1250", 1250, L""},     {L"CP1251", 1251, L""},     {L"CP1252", 1252, L""},      {L"CP1253", 1253, L""},
    {L"CP1254", 1254, L""},     {L"CP1255", 1255, L""},     {L"CP1256", 1256, L""},      {L"CP1257", 1257, L""},
    {L"CP1258", 1258, L""},     {L"ISO8859_1", 28591, L""}, {L"ISO8859_2", 28592, L""},  {L"ISO8859_3", 28593, L""},
    {L"ISO8859_4", 28594, L""}, {L"ISO8859_5", 28595, L""}, {L"ISO8859_6", 28596, L""},  {L"ISO8859_7", 28597, L""},
    {L"ISO8859_8", 28598, L""}, {L"ISO8859_9", 28599, L""}, {L"ISO8859_13", 28603, L""}, {L"ISO8859_15", 28605, L""},
    {L"BIG5", 950, L""},        {L"EUCCN", 936, L""},       {L"EUCJP", 20932, L""},      {L"EUCKR", 949, L""},
    {L"GB2312", 936, L""},      {L"GBK", 936, L""},         {L"KOI8R", 20866, L""},      {L"KOI8U", 21866, L""},
    {L"TIS620", 874, L""},      {L"UTF8", 65001, L""},      {L"GB18030", 936, L""},
};

const Interface kInterfaces[] = {
    {L"IvAttachment", kIvAttachment}, {L"IvMessage", kIvMessage},   {L"IvHeaders", kIvHeaders},
    {L"IvHeader", kIvHeader},         {L"IvMessages", kIvMessages}, {L"IvAttachments", kIvAttachments},
    {L"IvDecoder", kIvDecoder},       {L"IvEncoder", kIvEncoder},   {L"IVellobar", kIVellobar},
};

const Enumeration kEnumerations[] = {
    {L"AttachmentEncodingsEnum", kAttachmentEncodingsEnum},
    {L"LanguageEnum", kLanguageEnum},
    {L"Charsets", kCharsets},
};

const Class kClasses[] = {
    {L"Vellobar", L"IVellobar", L"Vellobar Class", L"Vellobar Class", L"Quorvane.Vellobar.1", L"Quorvane.Vellobar",
     L"Apartment"},
    {L"Message", L"IvMessage", L"vMessage Class", L"vMessage Class", L"Quorvane.Message.2", L"Quorvane.Message",
     L"both"},
    {L"Messages", L"IvMessages", L"vMessages Class", L"vMessages Class", L"Quorvane.Messages.2", L"Quorvane.Messages",
     L"both"},
    {L"Header", L"IvHeader", L"vHeader Class", L"vHeader Class", L"Quorvane.Header.2", L"Quorvane.Header", L"both"},
    {L"Headers", L"IvHeaders", L"vHeaders Class", L"vHeaders Class", L"Quorvane.Headers.2", L"Quorvane.Headers",
     L"both"},
    {L"Attachment", L"IvAttachment", L"vAttachment Class", L"Attachment Class", L"Quorvane.Attachment.2",
     L"Quorvane.Attachment", L"both"},
    {L"Attachments", L"IvAttachments", L"vAttachments Class", L"Attachments Class", L"Quorvane.Attachments.2",
     L"Quorvane.Attachments", L"both"},
    {L"Decoder", L"IvDecoder", L"vDecoder Class", L"vDecoder Class", L"Quorvane.Decoder.2", L"Quorvane.Decoder",
     L"both"},
    {L"Encoder", L"IvEncoder", L"vEncoder Class", L"vEncoder Class", L"Quorvane.Encoder.2", L"Quorvane.Encoder",
     L"both"},
};

}  // namespace

std::span<const Interface> interfaces() { return kInterfaces; }
std::span<const Enumeration> enumerations() { return kEnumerations; }
std::span<const Class> classes() { return kClasses; }

}  // namespace vellobar::tests
