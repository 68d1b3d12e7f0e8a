using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Runtime.Serialization.Json;
using System.Text;
using System.Threading.Tasks;
using System.Xml;
using System.Xml.Linq;
using BorvanUsb;

// Runs the table of cases in the current folder, which holds the table's files.
internal static class Cases
{
    internal static Task<int> RunAsync(string table)
    {
        using (Stream stream = File.OpenRead(table))
        using (XmlDictionaryReader reader =
            JsonReaderWriterFactory.CreateJsonReader(stream, XmlDictionaryReaderQuotas.Max))
        {
            return Checks.RunAsync(XElement.Load(reader).Element("cases").Elements().Select(
                one => (one.Element("name").Value, (Func<Task>)(() => RunCaseAsync(one)))).ToList());
        }
    }

    private static async Task RunCaseAsync(XElement one)
    {
        foreach (XElement file in one.Element("makes")?.Elements() ?? Enumerable.Empty<XElement>())
        {
            File.WriteAllBytes(file.Element("file").Value, Content(file));
        }
        using (var camera = new Camera())
        {
            foreach (XElement step in one.Element("steps").Elements())
            {
                await RunStepAsync(camera, step);
            }
        }
    }

    private static async Task RunStepAsync(Camera camera, XElement step)
    {
        var given = new Given(step.Element("arguments"));
        object returned = null;
        BorvanException error = null;
        try
        {
            returned = await CallAsync(camera, step.Element("call").Value, given);
        }
        catch (BorvanException thrown)
        {
            error = thrown;
        }
        CheckError(step.Element("error"), error);
        if (step.Element("returns") is XElement expected)
        {
            CheckReturned(expected, returned);
        }
        if (step.Element("file_holds") is XElement held)
        {
            Checks.SameAll(Content(held), File.ReadAllBytes(given.Text("file")));
        }
    }

    private static async Task<object> CallAsync(Camera camera, string call, Given given)
    {
        TimeSpan? limit = given.Has("time_limit_ms") ? TimeSpan.FromMilliseconds(given.Number("time_limit_ms"))
                                                     : (TimeSpan?)null;
        uint Number(string name) => given.Number(name);
        byte Byte(string name) => checked((byte)given.Number(name));
        I2cMode Mode() => (I2cMode)given.Number("mode");
        string file = given.Has("file") ? given.Text("file") : null;
        switch (call)
        {
            case "list": return camera.List();
            case "select": camera.Select(given.Signed("index")); break;
            case "close": camera.Dispose(); break;
            case "read_register": return camera.ReadRegister(Number("address"), given.Flag("wide"));
            case "write_register":
                camera.WriteRegister(Number("address"), Number("value"), given.Flag("wide"));
                break;
            case "read_i2c": return camera.ReadI2c(Byte("slave"), Number("address"), Mode(), Byte("option"));
            case "write_i2c":
                camera.WriteI2c(Byte("slave"), Number("address"), Number("value"), Mode(), Byte("option"));
                break;
            case "read_flash_word": return await camera.ReadFlashWordAsync(Number("address"), limit);
            case "write_flash_word": camera.WriteFlashWord(Number("address"), Number("value")); break;
            case "erase_flash_sector": camera.EraseFlashSector(Number("address")); break;
            case "read_flash": return await camera.ReadFlashAsync(Number("first"), (int)Number("count"), limit);
            case "read_flash_file":
                await camera.ReadFlashFileAsync(file, Number("first"), Number("last"), limit);
                break;
            case "write_flash_file": await camera.WriteFlashFileAsync(file, Number("address"), limit); break;
            case "read_registers_file":
                await camera.ReadRegistersFileAsync(file, Number("first"), Number("last"), limit);
                break;
            case "write_register_list": await camera.WriteRegisterListAsync(file, limit); break;
            case "read_i2c_file":
                await camera.ReadI2cFileAsync(file, Byte("slave"), Mode(), Number("first"), Number("last"), limit);
                break;
            case "write_i2c_list": await camera.WriteI2cListAsync(file, Byte("option"), limit); break;
            case "wait": await camera.WaitAsync(limit); break;
            default: throw new Exception($"no such call: {call}");
        }
        return null;
    }

    private static void CheckError(XElement expected, BorvanException error)
    {
        if (expected == null)
        {
            Checks.True(error == null, error?.ToString());
            return;
        }
        Checks.True(error != null, "an error was expected");
        // NoSuchCamera is no-such-camera in the table.
        string kind = string.Concat(error.Kind.ToString().Select(
            (letter, index) => (index > 0 && char.IsUpper(letter) ? "-" : "") + char.ToLowerInvariant(letter)));
        Checks.Same(expected.Element("kind").Value, kind);
        if (expected.Element("status") is XElement status)
        {
            Checks.Same(Given.Parse(status.Value), (long)error.Status);
        }
        Checks.True(error.Message.Contains(expected.Element("text").Value), error.Message);
    }

    private static void CheckReturned(XElement expected, object returned)
    {
        if (returned is CameraInfo[] cameras)
        {
            Checks.SameAll(
                expected.Elements().Select(one => string.Join("|", new[] { "index", "name", "vid", "pid", "path" }
                    .Select(name => one.Element(name).Value))),
                cameras.Select(one => $"{one.Index}|{one.Name}|{one.Vid}|{one.Pid}|{one.Path}"));
        }
        else if (returned is byte[] bytes)
        {
            Checks.SameAll(Content(expected), bytes);
        }
        else
        {
            Checks.Same(Given.Parse(expected.Value), (long)(uint)returned);
        }
    }

    private static byte[] Content(XElement description)
    {
        if (description.Element("text") is XElement text)
        {
            return Encoding.ASCII.GetBytes(text.Value);
        }
        string repeat = description.Element("repeat").Value;
        byte[] pattern = Enumerable.Range(0, repeat.Length / 2)
            .Select(index => Convert.ToByte(repeat.Substring(2 * index, 2), 16)).ToArray();
        int size = int.Parse(description.Element("bytes").Value, CultureInfo.InvariantCulture);
        return Enumerable.Range(0, size).Select(index => pattern[index % pattern.Length]).ToArray();
    }

    // The arguments of a step. Numbers are 0 if not given.
    private sealed class Given
    {
        private readonly Dictionary<string, string> values;

        internal Given(XElement arguments) =>
            values = (arguments?.Elements() ?? Enumerable.Empty<XElement>()).ToDictionary(
                one => one.Name.LocalName, one => one.Value);

        internal static long Parse(string text) =>
            text.StartsWith("0x") ? Convert.ToInt64(text.Substring(2), 16)
                                  : long.Parse(text, CultureInfo.InvariantCulture);

        internal bool Has(string name) => values.ContainsKey(name);
        internal string Text(string name) => values[name];
        internal bool Flag(string name) => Has(name) && values[name] == "true";
        internal uint Number(string name) => Has(name) ? checked((uint)Parse(values[name])) : 0;
        internal int Signed(string name) => checked((int)Parse(values[name]));
    }
}
