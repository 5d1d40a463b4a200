' Lists the messages of a mailbox with all their headers, marks the first message as reviewed, and writes the mailbox.
'
'     cscript list_and_edit.vbs C:\mail\inbox.mbox
'
' Ends with code 0, or with 1 and the error's number and text.
Option Explicit

Dim box, path, message, header, sizeBefore

If WScript.Arguments.Count <> 1 Then
  WScript.Echo "Usage: cscript list_and_edit.vbs MAILBOX"
  WScript.Quit 1
End If
path = WScript.Arguments(0)

On Error Resume Next

Set box = CreateObject("Quorvane.Vellobar")
StopOnError "creating the mailbox object"
box.Filename = path
box.Lock
StopOnError "opening " & path

ListMessages
StopOnError "listing the messages"

sizeBefore = FileSize(path)
Set message = box.Messages.Item(0)
message.Headers.Add "X-Reviewed", "yes"
StopOnError "adding a header"
WScript.Echo "Header added to message 0; mailbox changed: " & CStr(box.Changed)

box.Update
StopOnError "writing " & path
WScript.Echo "Mailbox written; mailbox changed: " & CStr(box.Changed)
WScript.Echo "The file had " & sizeBefore & " bytes and now has " & FileSize(path) & "."

' What an update wrote is read afresh: the messages are new objects.
Set message = box.Messages.Item(0)
WScript.Echo "Message 0 now says X-Reviewed: " & message.Headers.Item("X-Reviewed").Value
StopOnError "reading the header back"
box.Unlock

Sub ListMessages()
  WScript.Echo path & " holds " & box.Messages.Count & " messages."
  WScript.Echo ""
  For Each message In box.Messages
    WScript.Echo "Message " & message.Index & ": " & message.Size & " bytes at " & message.StartPosition & ", " & _
      message.Lines & " lines"
    WScript.Echo "  " & message.MailInfo
    If message.Headers.Exists("Subject") Then
      WScript.Echo "  about: " & message.Headers.Item("Subject").Value
    End If
    For Each header In message.Headers
      WScript.Echo "    " & header.Name & ": " & header.Value
    Next
    WScript.Echo ""
  Next
End Sub

Function FileSize(name)
  FileSize = CreateObject("Scripting.FileSystemObject").GetFile(name).Size
End Function

Sub StopOnError(action)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo "Error while " & action & ": " & (Err.Number And 65535) & " " & Err.Description
  WScript.Quit 1
End Sub
