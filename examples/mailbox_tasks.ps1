<#
.SYNOPSIS
Four tasks in PowerShell.

.EXAMPLE
.\mailbox_tasks.ps1 list C:\mail\inbox.mbox                        # lists the messages and marks the first as reviewed
.\mailbox_tasks.ps1 attachments C:\mail\inbox.mbox C:\mail\saved   # saves what is attached
.\mailbox_tasks.ps1 build C:\mail\new.eml C:\mail\report.pdf       # writes a new message
.\mailbox_tasks.ps1 encode C:\mail\report.pdf C:\mail\report.txt   # encodes a file with Base64
#>
param(
    [Parameter(Mandatory)] [ValidateSet('list', 'attachments', 'build', 'encode')] [string] $Task,
    [Parameter(Mandatory)] [string] $Path,
    [string] $Target
)
$ErrorActionPreference = 'Stop'

# The component knows the current folder of the process, which is not PowerShell's location: it is given whole paths.
function Get-WholePath([string] $Name) {
    $ExecutionContext.SessionState.Path.GetUnresolvedProviderPathFromPSPath($Name)
}

function Open-Mailbox([string] $Name) {
    $box = New-Object -ComObject Quorvane.Vellobar
    $box.Filename = Get-WholePath $Name
    $box.Lock()
    $box
}

function Edit-Mailbox {
    $box = Open-Mailbox $Path
    "$($box.Messages.Count) messages"
    foreach ($message in $box.Messages) {
        '{0}: {1}: {2} ({3} bytes)' -f $message.Index, $message.FromName, $message.Subject, $message.Size
    }
    $null = $box.Messages.Item(0).Headers.Add('X-Reviewed', 'yes')
    $box.Update()
    $box.Unlock()
}

# The name is the sender's: what would lead to another folder or is not allowed in a file name is replaced.
function Save-Attachment {
    $box = Open-Mailbox $Path
    foreach ($message in $box.Messages) {
        $number = 0
        foreach ($attachment in $message.Attachments) {
            $name = '{0}-{1}-{2}' -f $message.Index, $number, ($attachment.Name -replace '[\\/:*?"<>|]', '_')
            $file = Join-Path (Get-WholePath $Target) $name
            $attachment.Save($file)
            $file
            $number++
        }
    }
    $box.Unlock()
}

function New-Message {
    $box = New-Object -ComObject Quorvane.Vellobar
    $box.CreateTextHtmlAttachmentMessage((Get-WholePath $Path), 'Mara Lindqvist <mara@example.org>',
        'choir@example.net', 'The programme', 'Here is the programme.', '<p>Here is the <b>programme</b>.</p>', (Get-WholePath $Target))
    $built = New-Object -ComObject Quorvane.Message
    $built.Peek((Get-WholePath $Path))
    $built.Headers.ToString()
}

function ConvertTo-Base64File {
    (New-Object -ComObject Quorvane.Encoder).Base64((Get-WholePath $Path), (Get-WholePath $Target))
}

try {
    switch ($Task) {
        'list' { Edit-Mailbox }
        'attachments' { Save-Attachment }
        'build' { New-Message }
        'encode' { ConvertTo-Base64File }
    }
}
catch {
    # PowerShell wraps the error of a method; the innermost one carries the component's number in its low 16 bits.
    $problem = $_.Exception.GetBaseException()
    [Console]::Error.WriteLine("Error $($problem.HResult -band 0xFFFF): $($problem.Message)")
    exit 1
}
