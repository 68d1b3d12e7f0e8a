namespace BorvanUsb
{
    /// <summary>One camera of the list.</summary>
    public sealed class CameraInfo
    {
        internal CameraInfo(int index, UsbDeviceInfo device)
        {
            Index = index;
            Name = device.Name;
            Vid = device.VendorId;
            Pid = device.ProductId;
            Path = device.Path;
        }

        public int Index { get; }
        public string Name { get; }

        /// <summary>Vendor ID, four upper-case hexadecimal digits.</summary>
        public string Vid { get; }

        /// <summary>Product ID, four upper-case hexadecimal digits.</summary>
        public string Pid { get; }

        /// <summary>Device path, lower case.</summary>
        public string Path { get; }
    }

    /// <summary>Widths of I2C accesses: bits of the register address, bits of the data.</summary>
    public enum I2cMode
    {
        Address8Data8 = 0,
        Address16Data8 = 1,
        Address16Data16 = 2,
        Address32Data8 = 3,
        Address32Data16 = 4,
        Address32Data32 = 5,
    }
}
