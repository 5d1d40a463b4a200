// A late-bound JScript host uses every class: a message with parts and attachments, headers, attachments that are saved and
// added, the builders, the coding objects, and errors with their whole number. Prints "all as expected" at the end; ends with 1
// at the first wrong value.
var encBASE64 = 1, encUUENCODE = 3, encQUOTEDPRINTABLE = 4;
var files = new ActiveXObject("Scripting.FileSystemObject");
var folder = WScript.Arguments(0) + "\\classes.js";
if (!files.FolderExists(folder)) files.CreateFolder(folder);

function fail(what, expected, found) {
  WScript.Echo(what + ": expected [" + expected + "], found [" + found + "]");
  WScript.Quit(1);
}

function expect(what, expected, found) {
  if (expected !== found) fail(what, expected, found);
}

// The number of an error: the component's own ones are 0x800A0000 and the number, in 32 bits with a sign.
function numbered(number) {
  return (0x800a0000 | number);
}

function expectError(what, number, description, action) {
  try {
    action();
  } catch (error) {
    expect(what + ", number", number, error.number);
    expect(what + ", description", description, error.description);
    return;
  }
  fail(what, "an error", "none");
}

function expectSomeError(what, action) {
  try {
    action();
  } catch (error) {
    return;
  }
  fail(what, "an error", "none");
}

function writeFile(path, content) {
  var file = files.CreateTextFile(path, true);
  file.Write(content);
  file.Close();
}

function readFile(path) {
  var file = files.OpenTextFile(path, 1);
  var content = file.ReadAll();
  file.Close();
  return content;
}

function create(name) {
  return new ActiveXObject("Quorvane." + name);
}

function joined(collection, property) {
  var all = "";
  for (var walk = new Enumerator(collection); !walk.atEnd(); walk.moveNext()) all += walk.item()[property] + ";";
  return all;
}

function useMessage() {
  var message = create("Message");
  message.From = "Ann Smith <ann@example.org>";
  message.Subject = "Caf\u00e9";
  message.Text = "text";
  expect("sender", "Ann Smith", message.FromName);
  expect("subject", "Caf\u00e9", message.Subject);
  expect("the default member of a collection", "From", message.Headers(0).Name);
  expect("headers", "From;Subject;", joined(message.Headers, "Name"));
  var added = message.Headers.Add("X-Empty");
  expect("a value that is left out", "X-Empty: ", added.ToString());
  message.Headers.Remove(added);
  expect("removed by object", 2, message.Headers.Count);
  message.Tag = "anything";
  expect("tag", "anything", message.Tag);
  message.Save(folder + "\\message.eml");
  expectError("a missing file", numbered(30006), "Could not load headers for the message", function () {
    message.Peek(folder + "\\missing.eml");
  });
  expectError("an unsupported encoding", numbered(30013), "Unsupported encoding type", function () {
    message.Text = "x";
    return message.DecodedText(0);
  });
}

function useHeaders() {
  var headers = create("Headers");
  headers.FromString("A: 1\r\nB: 2\r\nB: 3");
  expect("first of a name", "2", headers.Item("b").Value);
  headers.Remove("b");
  expect("second of a name", "3", headers.Item("b").Value);
  expect("exists", true, headers.Exists("A"));
  expect("exists not", false, headers.Exists("C"));
  expect("null is no name", false, headers.Exists(null));
  expectSomeError("an unknown name", function () { headers.Item("C"); });
  var header = create("Header");
  header.Name = "N";
  header.Value = "V";
  expect("a header by itself", "N: V", header.ToString());
}

function useAttachments() {
  var attached = folder + "\\attached.txt", saved = folder + "\\saved.txt", path = folder + "\\box.mbox";
  writeFile(attached, "a=b\r\n");
  writeFile(path, "");
  var box = create("Vellobar");
  box.Filename = path;
  box.Lock();
  box.CreateTextHtmlAttachmentMessage(folder + "\\built.eml", "a@example.org", "b@example.org", "Built", "plain",
                                      "<p>html</p>", attached);
  var message = box.Messages.Add(folder + "\\built.eml");
  message.Attachments.Add(attached, encQUOTEDPRINTABLE);
  message.Attachments.Add(attached, encUUENCODE);
  box.Update();
  message = box.Messages.Item(0);
  expect("names", "attached.txt;attached.txt;attached.txt;", joined(message.Attachments, "Name"));
  expect("encodings", "1;4;3;", joined(message.Attachments, "Encoding"));
  message.Attachments(1).Save(saved);
  expect("saved", "a=b\r\n", readFile(saved).substr(0, 5));
  expect("part", "quoted-printable", message.Attachments(1).Part.ContentTransferEncoding);
  expectError("a missing file", numbered(30011), "Cannot open file", function () {
    message.Attachments.Add(folder + "\\missing");
  });
  expectError("an unknown encoding", numbered(30013), "Unsupported encoding type", function () {
    message.Attachments.Add(attached, 77);
  });
  expectError("a missing folder", numbered(30008), "Could not access destination file", function () {
    message.Attachments(0).Save(folder + "\\no folder\\file");
  });
  expectSomeError("a position too far", function () { message.Attachments.Item(3); });
  box.Messages.RemoveAll();
  box.Update();
  box.Unlock();
  expect("nothing left", 0, files.GetFile(path).Size);
}

function useCoding() {
  var encoder = create("Encoder"), decoder = create("Decoder");
  expect("base64", "QUJD", encoder.Base64Text("ABC"));
  expect("base64 and back", "ABC", decoder.Base64Text("QUJD"));
  expect("quoted-printable", "a=3Db", encoder.QuotedPrintableText("a=b"));
  expect("uuencode", "0V%T", encoder.UuencodeText("Cat"));
  var plain = folder + "\\attached.txt", coded = folder + "\\coded", back = folder + "\\back";
  encoder.Base64(plain, coded);
  expect("a coded file", "YT1iDQo=\r\n", readFile(coded));
  decoder.Base64(coded, back);
  expect("a decoded file", "a=b\r\n", readFile(back));
  expectSomeError("no text", function () { encoder.Base64Text(""); });
  // JScript passes values, never variables, so that no result could come back.
  var dictionary = new ActiveXObject("Scripting.Dictionary"), result = "kept";
  dictionary.Add("first", 65);
  expectSomeError("an array and a variable", function () { encoder.Base64Data(dictionary.Items(), result); });
  expectSomeError("an array of a script", function () { encoder.Base64Data([65, 66], result); });
  expect("a refused call changes nothing", "kept", result);
}

useMessage();
useHeaders();
useAttachments();
useCoding();
// A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo("all as expected");
WScript.Quit(0);
