' A late-bound host reads numbered errors through Err: number (VBScript takes the facility of controls off), description and
' source. Ends with 1 at the first wrong value.
Option Explicit

Dim folder
folder = WScript.Arguments(0)

Sub Fail(what, expected, found)
  WScript.Echo what & ": expected [" & expected & "], found [" & found & "]"
  WScript.Quit 1
End Sub

Sub ExpectError(what, number, description, source)
  Dim found
  If Err.Number <> number Then Fail what & ", number", number, Err.Number
  If Err.Description <> description Then Fail what & ", description", description, Err.Description
  If Err.Source <> source Then Fail what & ", source", source, Err.Source
  Err.Clear
End Sub

Dim mailbox, ignored
Set mailbox = CreateObject("Quorvane.Vellobar.1")
On Error Resume Next

mailbox.Update
ExpectError "update of an unlocked mailbox", 30010, "Mailbox not locked", "Quorvane.Vellobar.1"

mailbox.Filename = folder & "\no such mailbox"
mailbox.Lock
ExpectError "lock of a missing file", 30001, "Cannot open mailbox file", "Quorvane.Vellobar.1"

Set ignored = mailbox.Messages.Add(folder & "\no such message")
ExpectError "add of a missing file", 30011, "Cannot open file", "Quorvane.Messages.2"

CreateObject("Quorvane.Message").Peek folder & "\no such message"
ExpectError "peek at a missing file", 30006, "Could not load headers for the message", "Quorvane.Message.2"

CreateObject("Quorvane.Message").Save folder & "\no such folder\file"
ExpectError "save to a missing folder", 30002, "Cannot open mailbox file for updating", "Quorvane.Message.2"

Set ignored = mailbox.Messages(0)
If Err.Number = 0 Then Fail "item of an empty collection", "an error", "none"
Err.Clear

mailbox.AutoUpdate = True
If Err.Number <> 0 Then Fail "a put that succeeds", 0, Hex(Err.Number)
' A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo "all as expected"
WScript.Quit 0
