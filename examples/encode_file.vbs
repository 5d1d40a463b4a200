' Encodes a file with Base64. An Encoder also has QuotedPrintable, Uuencode and BinHex4; a Decoder has the ways back.
'
'     cscript encode_file.vbs C:\mail\report.pdf C:\mail\report.txt
Option Explicit

If WScript.Arguments.Count <> 2 Then
  WScript.Echo "Usage: cscript encode_file.vbs FILE ENCODED"
  WScript.Quit 1
End If

CreateObject("Quorvane.Encoder").Base64 WScript.Arguments(0), WScript.Arguments(1)
WScript.Echo WScript.Arguments(1) & " written"
