Attribute VB_Name = "MailboxTasks"
' Four tasks in VBA (Excel, Word, Access), early-bound: import this module and set a reference to
' "Quorvane! COM Mailbox ActiveX Control" (Tools, References). Run them from the Immediate window:
'
'     ListAndEdit "C:\mail\inbox.mbox"
'     SaveAttachments "C:\mail\inbox.mbox", "C:\mail\saved"
'     BuildMessage "C:\mail\new.eml", "C:\mail\report.pdf"
'     EncodeFile "C:\mail\report.pdf", "C:\mail\report.txt"
Option Explicit

' Lists the messages of a mailbox and marks the first as reviewed.
Public Sub ListAndEdit(ByVal Path As String)
    Dim Box As VELLOBARLib.Vellobar, Message As VELLOBARLib.Message
    On Error GoTo Failed
    Set Box = OpenMailbox(Path)
    Debug.Print Box.Messages.Count & " messages"
    For Each Message In Box.Messages
        Debug.Print Message.Index & ": " & Message.FromName & ": " & Message.Subject & " (" & Message.Size & " bytes)"
    Next
    Box.Messages(0).Headers.Add "X-Reviewed", "yes"
    Box.Update
    Box.Unlock
    Exit Sub
Failed:
    ' The component's own numbers are the low 16 bits; the description says what happened.
    MsgBox "Error " & (Err.Number And &HFFFF&) & " of " & Err.Source & ": " & Err.Description, vbExclamation
End Sub

' Saves what is attached under names like 2-0-report.pdf.
Public Sub SaveAttachments(ByVal Path As String, ByVal Folder As String)
    Dim Box As VELLOBARLib.Vellobar, Message As VELLOBARLib.Message, Attachment As VELLOBARLib.Attachment
    Dim Number As Long
    Set Box = OpenMailbox(Path)
    For Each Message In Box.Messages
        Number = 0
        For Each Attachment In Message.Attachments
            Attachment.Save Folder & "\" & Message.Index & "-" & Number & "-" & SafeName(Attachment.Name)
            Number = Number + 1
        Next
    Next
    Box.Unlock
End Sub

' Writes a new message. The part of Attached behind its last backslash becomes the name of the attachment: it has to be a
' whole path.
Public Sub BuildMessage(ByVal Path As String, ByVal Attached As String)
    Dim Box As New VELLOBARLib.Vellobar, Built As New VELLOBARLib.Message
    Box.CreateTextHtmlAttachmentMessage Path, "Mara Lindqvist <mara@example.org>", "choir@example.net", _
        "The programme", "Here is the programme.", "<p>Here is the <b>programme</b>.</p>", Attached
    Built.Peek Path
    Debug.Print Built.Headers.ToString
End Sub

' Encodes a file with Base64. In memory, arrays of bytes are coded with Base64Data.
Public Sub EncodeFile(ByVal Path As String, ByVal Encoded As String)
    Dim Encoder As New VELLOBARLib.Encoder
    Encoder.Base64 Path, Encoded
End Sub

Private Function OpenMailbox(ByVal Path As String) As VELLOBARLib.Vellobar
    Set OpenMailbox = New VELLOBARLib.Vellobar
    OpenMailbox.Filename = Path
    OpenMailbox.Lock
End Function

' The name as the sender wrote it, without what would lead to another folder or is not allowed in a file name.
Private Function SafeName(ByVal Name As String) As String
    Const NotAllowed As String = "\/:*?""<>|"
    Dim i As Long
    SafeName = Name
    For i = 1 To Len(NotAllowed)
        SafeName = Replace(SafeName, Mid$(NotAllowed, i, 1), "_")
    Next
End Function
