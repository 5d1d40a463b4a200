// Four tasks in C#, late-bound, for .NET on Windows (and .NET Framework with a reference to Microsoft.CSharp):
//
//     MailboxTasks list MAILBOX                  lists the messages and marks the first as reviewed
//     MailboxTasks attachments MAILBOX FOLDER    saves what is attached
//     MailboxTasks build MESSAGE ATTACHED        writes a new message
//     MailboxTasks encode FILE ENCODED           encodes a file with Base64
using System;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;

internal static class MailboxTasks
{
    // The control lives in a single-threaded apartment.
    [STAThread]
    private static int Main(string[] arguments)
    {
        try
        {
            return Run(arguments);
        }
        catch (COMException error)
        {
            // The component's own numbers are the low 16 bits; the text says what happened.
            Console.Error.WriteLine("Error {0} of {1}: {2}", error.ErrorCode & 0xFFFF, error.Source, error.Message);
            return 1;
        }
    }

    private static int Run(string[] arguments)
    {
        string task = arguments.ElementAtOrDefault(0), path = arguments.ElementAtOrDefault(1);
        string target = arguments.ElementAtOrDefault(2);
        if (task == "list" && path != null) ListAndEdit(path);
        else if (task == "attachments" && target != null) SaveAttachments(path, target);
        else if (task == "build" && target != null) BuildMessage(path, target);
        else if (task == "encode" && target != null) Create("Encoder").Base64(path, target);
        else return ShowUsage();
        return 0;
    }

    private static int ShowUsage()
    {
        Console.Error.WriteLine("Usage: MailboxTasks list|attachments|build|encode FILE [TARGET]");
        return 1;
    }

    private static dynamic Create(string name)
    {
        return Activator.CreateInstance(Type.GetTypeFromProgID("Quorvane." + name, true));
    }

    private static dynamic Open(string path)
    {
        dynamic box = Create("Vellobar");
        box.Filename = path;
        box.Lock();
        return box;
    }

    private static void ListAndEdit(string path)
    {
        dynamic box = Open(path);
        Console.WriteLine("{0} messages", (int)box.Messages.Count);
        foreach (dynamic message in box.Messages)
            Console.WriteLine($"{message.Index}: {message.FromName}: {message.Subject} ({message.Size} bytes)");
        box.Messages[0].Headers.Add("X-Reviewed", "yes");
        box.Update();
        box.Unlock();
    }

    private static void SaveAttachments(string path, string folder)
    {
        dynamic box = Open(path);
        foreach (dynamic message in box.Messages)
        {
            int number = 0;
            foreach (dynamic attachment in message.Attachments)
            {
                string target = Path.Combine(folder, $"{message.Index}-{number++}-{SafeName((string)attachment.Name)}");
                attachment.Save(target);
                Console.WriteLine(target);
            }
        }
        box.Unlock();
    }

    // The name as the sender wrote it, without what would lead to another folder or is not allowed in a file name.
    private static string SafeName(string name)
    {
        return string.Join("_", name.Split(Path.GetInvalidFileNameChars()));
    }

    private static void BuildMessage(string path, string attached)
    {
        // The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path.
        Create("Vellobar").CreateTextHtmlAttachmentMessage(path, "Mara Lindqvist <mara@example.org>",
            "choir@example.net", "The programme", "Here is the programme.",
            "<p>Here is the <b>programme</b>.</p>", Path.GetFullPath(attached));
        dynamic built = Create("Message");
        built.Peek(path);
        Console.WriteLine((string)built.Headers.ToString());
    }
}
