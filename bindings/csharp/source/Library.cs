using System;
using System.Runtime.InteropServices;

namespace BorvanUsb
{
    // The exports. Booleans have one byte; file names are 8-bit texts that end with a zero.
    internal static unsafe class Library
    {
        private const string Name = "BorvanUSB_x64.dll";

        static Library()
        {
            // The second DLL finds the first by its name, because it is loaded then.
            GetProgressInfo();
        }

        [DllImport(Name, ExactSpelling = true)]
        internal static extern int UsbIniDevice();

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbUpdateDevice();

        [DllImport(Name, ExactSpelling = true)]
        internal static extern int UsbGetDeviceNum();

        [DllImport(Name, ExactSpelling = true)]
        internal static extern UsbDeviceRecord* UsbGetAllDeviceInfo();

        [DllImport(Name, ExactSpelling = true)]
        internal static extern UsbDeviceRecord UsbGetSelectDeviceInfo();

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbSelectDevice(int index);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbDestroyUSB();

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbRegisterRead(uint address, ref uint value, byte flag);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbRegisterWrite(uint address, uint value, byte flag);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbI2cRead(
            uint deviceId, uint registerAddress, ref uint value, int mode, uint option);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbI2cWrite(
            uint deviceId, uint registerAddress, uint value, int mode, uint option);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbFlashRead(uint address, ref uint value);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbFlashWrite(uint address, uint value);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbFlashErase(uint address);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbFlashWriteFile(byte[] fileName, uint startAddress);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbFlashQuickReadFile(byte[] fileName, uint startAddress, uint endAddress);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbRegisterReadFile(byte[] fileName, uint startAddress, uint endAddress);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbRegisterWriteFile(byte[] fileName);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbI2CReadFile(
            uint startAddress, uint endAddress, byte[] fileName, int slave, uint mode);

        [DllImport(Name, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool UsbI2CWriteFile(byte[] fileName, uint option);

        [DllImport(Name, ExactSpelling = true)]
        internal static extern ulong GetProgressInfo();

        [DllImport("borvanusb_select.dll", ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool borvan_select_device(int index, out IntPtr message);
    }
}
