' Saves everything that is attached to the messages of a mailbox into a folder, under names like 2-0-report.pdf: the message,
' the attachment, and the name that the sender gave.
'
'     cscript save_attachments.vbs C:\mail\inbox.mbox C:\mail\attached
Option Explicit

Dim box, message, attachment, number, path

If WScript.Arguments.Count <> 2 Then
  WScript.Echo "Usage: cscript save_attachments.vbs MAILBOX FOLDER"
  WScript.Quit 1
End If

Set box = CreateObject("Quorvane.Vellobar")
box.Filename = WScript.Arguments(0)
box.Lock
For Each message In box.Messages
  number = 0
  For Each attachment In message.Attachments
    path = WScript.Arguments(1) & "\" & message.Index & "-" & number & "-" & SafeName(attachment.Name)
    attachment.Save path
    WScript.Echo path & ": " & attachment.Type & ", about " & attachment.Size & " bytes"
    number = number + 1
  Next
Next
box.Unlock

' The name as the sender wrote it, without what would lead to another folder or is not allowed in a file name.
Function SafeName(name)
  Dim i
  SafeName = name
  For i = 1 To Len("\/:*?""<>|")
    SafeName = Replace(SafeName, Mid("\/:*?""<>|", i, 1), "_")
  Next
End Function
