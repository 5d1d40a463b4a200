// A late-bound JScript host: locks a mailbox, walks it with an Enumerator, edits it, updates, and reads errors. Ends with 1 at
// the first wrong value.
var folder = WScript.Arguments(0);
var path = folder + "\\script.mbox";
var files = new ActiveXObject("Scripting.FileSystemObject");

function fail(what, expected, found) {
  WScript.Echo(what + ": expected [" + expected + "], found [" + found + "]");
  WScript.Quit(1);
}

function expect(what, expected, found) {
  if (expected !== found) fail(what, expected, found);
}

function expectError(what, number, description, action) {
  try {
    action();
  } catch (error) {
    expect(what + ", number", number, error.number & 0xffff);
    expect(what + ", description", description, error.description);
    return;
  }
  fail(what, "an error", "none");
}

var file = files.CreateTextFile(path, true);
file.Write("From a@example.org Mon Jan  1 10:00:00 2024\r\nSubject: One\r\n\r\n1\r\n" +
           "From b@example.org Tue Jan  2 11:00:00 2024\r\nSubject: Two\r\n\r\n2\r\n");
file.Close();

var mailbox = new ActiveXObject("Quorvane.Vellobar");
mailbox.Filename = path;
mailbox.Lock();
expect("count", 2, mailbox.Messages.Count);

var subjects = "";
for (var walk = new Enumerator(mailbox.Messages); !walk.atEnd(); walk.moveNext()) subjects += walk.item().Subject + ";";
expect("subjects", "One;Two;", subjects);

var headers = mailbox.Messages.Item(1).Headers;
expect("header", "Subject: Two", headers.Item("SUBJECT").ToString());
headers.Add("X-Script", "JScript");
headers.Item(0).Value = "Changed";
expect("changed", true, mailbox.Changed);
mailbox.Messages.Remove(mailbox.Messages.Item(0));
expectError("name of a locked mailbox", 30000, "Mailbox locked! Call Unlock() method first", function () {
  mailbox.Filename = "other";
});
mailbox.Update();

var read = files.OpenTextFile(path, 1);
expect("file", "From b@example.org Tue Jan  2 11:00:00 2024\r\nSubject: Changed\r\nX-Script: JScript\r\n\r\n2\r\n\r\n",
       read.ReadAll());
read.Close();
mailbox.Unlock();
expectError("update of an unlocked mailbox", 30010, "Mailbox not locked", function () { mailbox.Update(); });
// A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo("all as expected");
WScript.Quit(0);
