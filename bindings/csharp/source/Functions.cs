using System;
using System.Runtime.InteropServices;

namespace BorvanUsb
{
    /// <summary>A camera as the library describes it.</summary>
    public sealed class UsbDeviceInfo
    {
        internal unsafe UsbDeviceInfo(ref UsbDeviceRecord record)
        {
            // A path or name of 120 bytes has no terminating zero, and the IDs never have one.
            fixed (byte* path = record.Path, name = record.Name, vendor = record.VendorId, product = record.ProductId)
            {
                Path = AnsiText.Decode(path, UsbDeviceRecord.TextSize);
                Name = AnsiText.Decode(name, UsbDeviceRecord.TextSize);
                VendorId = AnsiText.Decode(vendor, UsbDeviceRecord.IdSize);
                ProductId = AnsiText.Decode(product, UsbDeviceRecord.IdSize);
            }
        }

        public string Path { get; }
        public string Name { get; }
        public string VendorId { get; }
        public string ProductId { get; }
    }

    // As the library stores it.
    [StructLayout(LayoutKind.Sequential)]
    internal unsafe struct UsbDeviceRecord
    {
        internal const int TextSize = 120;
        internal const int IdSize = 4;

        internal fixed byte Path[TextSize];
        internal fixed byte Name[TextSize];
        internal fixed byte VendorId[IdSize];
        internal fixed byte ProductId[IdSize];
    }

    /// <summary>
    /// The 21 functions of BorvanUSB_x64.dll as they are, and borvan_select_device. borvan_usb.h describes them
    /// with their traps: call them all from one thread. A file name may be null.
    /// </summary>
    public static class Functions
    {
        public static int UsbIniDevice() => Library.UsbIniDevice();
        public static bool UsbUpdateDevice() => Library.UsbUpdateDevice();

        /// <summary>Crashes without an instance.</summary>
        public static int UsbGetDeviceNum() => Library.UsbGetDeviceNum();

        /// <summary>Crashes without an instance. Each call leaks the library's array.</summary>
        public static unsafe UsbDeviceInfo[] UsbGetAllDeviceInfo()
        {
            int count = Math.Max(0, Library.UsbGetDeviceNum());
            UsbDeviceRecord* records = Library.UsbGetAllDeviceInfo();
            var result = new UsbDeviceInfo[count];
            for (int i = 0; i < count; ++i)
            {
                result[i] = new UsbDeviceInfo(ref records[i]);
            }
            return result;
        }

        /// <summary>Crashes without an instance.</summary>
        public static UsbDeviceInfo UsbGetSelectDeviceInfo()
        {
            UsbDeviceRecord record = Library.UsbGetSelectDeviceInfo();
            return new UsbDeviceInfo(ref record);
        }

        /// <summary>Throws SEHException when the camera can't be opened: use BorvanSelectDevice.</summary>
        public static bool UsbSelectDevice(int index) => Library.UsbSelectDevice(index);

        /// <summary>Crashes without an instance.</summary>
        public static bool UsbDestroyUSB() => Library.UsbDestroyUSB();

        /// <summary>`value` is unchanged if the function stores nothing.</summary>
        public static bool UsbRegisterRead(uint address, ref uint value, byte flag) =>
            Library.UsbRegisterRead(address, ref value, flag);

        public static bool UsbRegisterWrite(uint address, uint value, byte flag) =>
            Library.UsbRegisterWrite(address, value, flag);

        /// <summary>`value` is unchanged if the function stores nothing.</summary>
        public static bool UsbI2cRead(uint deviceId, uint registerAddress, ref uint value, int mode, uint option) =>
            Library.UsbI2cRead(deviceId, registerAddress, ref value, mode, option);

        public static bool UsbI2cWrite(uint deviceId, uint registerAddress, uint value, int mode, uint option) =>
            Library.UsbI2cWrite(deviceId, registerAddress, value, mode, option);

        public static bool UsbFlashRead(uint address, ref uint value) => Library.UsbFlashRead(address, ref value);
        public static bool UsbFlashWrite(uint address, uint value) => Library.UsbFlashWrite(address, value);
        public static bool UsbFlashErase(uint address) => Library.UsbFlashErase(address);

        public static bool UsbFlashWriteFile(string fileName, uint startAddress) =>
            Library.UsbFlashWriteFile(AnsiText.Encode(nameof(UsbFlashWriteFile), fileName), startAddress);

        public static bool UsbFlashQuickReadFile(string fileName, uint startAddress, uint endAddress) =>
            Library.UsbFlashQuickReadFile(
                AnsiText.Encode(nameof(UsbFlashQuickReadFile), fileName), startAddress, endAddress);

        public static bool UsbRegisterReadFile(string fileName, uint startAddress, uint endAddress) =>
            Library.UsbRegisterReadFile(
                AnsiText.Encode(nameof(UsbRegisterReadFile), fileName), startAddress, endAddress);

        public static bool UsbRegisterWriteFile(string fileName) =>
            Library.UsbRegisterWriteFile(AnsiText.Encode(nameof(UsbRegisterWriteFile), fileName));

        public static bool UsbI2CReadFile(uint startAddress, uint endAddress, string fileName, int slave, uint mode) =>
            Library.UsbI2CReadFile(
                startAddress, endAddress, AnsiText.Encode(nameof(UsbI2CReadFile), fileName), slave, mode);

        public static bool UsbI2CWriteFile(string fileName, uint option) =>
            Library.UsbI2CWriteFile(AnsiText.Encode(nameof(UsbI2CWriteFile), fileName), option);

        /// <summary>Any thread may call it.</summary>
        public static ulong GetProgressInfo() => Library.GetProgressInfo();

        /// <summary>
        /// Selects as UsbSelectDevice does; `message` is the text that one throws, otherwise null. Needs an instance,
        /// unless the index is negative.
        /// </summary>
        public static bool BorvanSelectDevice(int index, out string message)
        {
            bool selected = Library.borvan_select_device(index, out IntPtr text);
            message = text == IntPtr.Zero ? null : Marshal.PtrToStringAnsi(text);
            return selected;
        }
    }
}
