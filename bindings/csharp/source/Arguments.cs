namespace BorvanUsb
{
    // Checks of arguments. The library would use a part of a value that does not fit.
    internal static class Arguments
    {
        private const long RegistersPerJob = 56;
        private const uint Sector = 4096;

        internal static BorvanException NotAllowed(string what, string wrong, string allowed) =>
            new BorvanException(ErrorKind.Argument, $"{what}: {wrong} is not allowed: {allowed}");

        internal static string Hex(uint number) => $"0x{number:x}";

        internal static void CheckNumber(string what, string name, uint value, uint largest)
        {
            if (value > largest)
            {
                throw NotAllowed(what, $"{name} {Hex(value)}", $"0 to {Hex(largest)}");
            }
        }

        internal static void CheckSector(string what, uint address)
        {
            if (address % Sector != 0)
            {
                throw NotAllowed(what, $"address {Hex(address)}", $"a multiple of {Sector}");
            }
        }

        internal static void CheckI2c(string what, uint address, I2cMode mode)
        {
            if (mode < I2cMode.Address8Data8 || mode > I2cMode.Address32Data32)
            {
                throw NotAllowed(what, $"mode {(int)mode}", "0 to 5");
            }
            uint largest = mode == I2cMode.Address8Data8 ? 0xffu
                : mode <= I2cMode.Address16Data16 ? 0xffffu
                : uint.MaxValue;
            CheckNumber(what, "address", address, largest);
        }

        internal static uint LargestI2cValue(I2cMode mode)
        {
            switch (mode)
            {
                case I2cMode.Address16Data16:
                case I2cMode.Address32Data16:
                    return 0xffff;
                case I2cMode.Address32Data32:
                    return uint.MaxValue;
                default:
                    return 0xff;
            }
        }

        // A range of registers for one job. With more than 56, a failed transfer would not be noticed.
        internal static void CheckRun(string what, uint first, uint last)
        {
            long count = (long)last - first + 1;
            if (count < 1 || count > RegistersPerJob)
            {
                throw new BorvanException(
                    ErrorKind.Argument, $"{what}: {count} registers are not allowed: 1 to {RegistersPerJob}");
            }
        }

        // The file of a job.
        internal static void CheckFile(string what, string file)
        {
            if (file == null)
            {
                throw NotAllowed(what, "file null", "a text");
            }
            AnsiText.Encode(what, file);
        }

        // The output file of a job. The length of a text file is not known.
        internal static void CheckRawFile(string what, string file)
        {
            CheckFile(what, file);
            if (file.Substring(file.LastIndexOf('.') + 1) == "txt")
            {
                throw new BorvanException(ErrorKind.Argument, $"{what}: a name that ends in .txt is not allowed");
            }
        }
    }
}
