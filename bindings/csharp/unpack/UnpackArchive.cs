using System;
using System.IO;
using System.Reflection;

// Decompresses the packages of NuGet that the SDK brings: UnpackArchive LIBRARY COMPRESSED ZIP. LIBRARY is the SDK's own
// Microsoft.DotNet.Archive.dll, which knows this form of LZMA.
internal static class UnpackArchive
{
    private static void Main(string[] arguments)
    {
        MethodInfo decompress = Assembly.LoadFrom(Path.GetFullPath(arguments[0]))
            .GetType("Microsoft.DotNet.Archive.CompressionUtility", true)
            .GetMethod("Decompress", BindingFlags.Static | BindingFlags.Public | BindingFlags.NonPublic);
        Type report = decompress.GetParameters()[2].ParameterType.GetGenericArguments()[0];
        object progress = Activator.CreateInstance(typeof(Progress<>).MakeGenericType(report));
        using (FileStream compressed = File.OpenRead(arguments[1]))
        using (FileStream zip = File.Create(arguments[2]))
        {
            decompress.Invoke(null, new[] { compressed, zip, progress });
        }
    }
}
