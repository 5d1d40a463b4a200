// Four tasks in JScript:
//
//     cscript mailbox_tasks.js list MAILBOX                  lists the messages and marks the first as reviewed
//     cscript mailbox_tasks.js attachments MAILBOX FOLDER    saves what is attached
//     cscript mailbox_tasks.js build MESSAGE ATTACHED        writes a new message
//     cscript mailbox_tasks.js encode FILE ENCODED           encodes a file with Base64

function open(path) {
  var box = new ActiveXObject("Quorvane.Vellobar");
  box.Filename = path;
  box.Lock();
  return box;
}

function each(collection, action) {
  for (var walk = new Enumerator(collection); !walk.atEnd(); walk.moveNext()) action(walk.item());
}

function listAndEdit(path) {
  var box = open(path);
  WScript.Echo(box.Messages.Count + " messages");
  each(box.Messages, function (message) {
    WScript.Echo(message.Index + ": " + message.FromName + ": " + message.Subject + " (" + message.Size + " bytes)");
  });
  box.Messages(0).Headers.Add("X-Reviewed", "yes");
  box.Update();
  box.Unlock();
}

// The name is the sender's: what would lead to another folder or is not allowed in a file name is replaced.
function saveAttachments(path, folder) {
  var box = open(path);
  each(box.Messages, function (message) {
    var number = 0;
    each(message.Attachments, function (attachment) {
      var name = attachment.Name.replace(/[\\\/:*?"<>|]/g, "_");
      var target = folder + "\\" + message.Index + "-" + number++ + "-" + name;
      attachment.Save(target);
      WScript.Echo(target);
    });
  });
  box.Unlock();
}

// The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path.
function buildMessage(path, attached) {
  var whole = new ActiveXObject("Scripting.FileSystemObject").GetAbsolutePathName(attached);
  new ActiveXObject("Quorvane.Vellobar").CreateTextHtmlAttachmentMessage(
      path, "Mara Lindqvist <mara@example.org>", "choir@example.net", "The programme", "Here is the programme.",
      "<p>Here is the <b>programme</b>.</p>", whole);
  var built = new ActiveXObject("Quorvane.Message");
  built.Peek(path);
  WScript.Echo(built.Headers.ToString());
}

function encodeFile(path, encoded) {
  new ActiveXObject("Quorvane.Encoder").Base64(path, encoded);
}

var tasks = {list: listAndEdit, attachments: saveAttachments, build: buildMessage, encode: encodeFile};
var given = WScript.Arguments;
if (given.length < 2 || !tasks[given(0)]) {
  WScript.Echo("Usage: cscript mailbox_tasks.js list|attachments|build|encode FILE [TARGET]");
  WScript.Quit(1);
}
try {
  tasks[given(0)](given(1), given.length > 2 ? given(2) : "");
} catch (error) {
  // The component's own numbers are the low 16 bits; the text says what happened.
  WScript.Echo("Error " + (error.number & 0xffff) + ": " + error.description);
  WScript.Quit(1);
}
