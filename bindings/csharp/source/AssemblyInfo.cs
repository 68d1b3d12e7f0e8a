using System.Reflection;
using System.Runtime.Versioning;

[assembly: AssemblyTitle("BorvanUsb")]
[assembly: AssemblyDescription("Access to the inside of a USB camera: chip registers, I2C devices and SPI flash")]
[assembly: TargetFramework(".NETStandard,Version=v2.0", FrameworkDisplayName = "")]
