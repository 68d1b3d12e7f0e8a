using System;
using System.Diagnostics;
using System.Threading;
using System.Threading.Tasks;

namespace BorvanUsb
{
    /// <summary>
    /// The library's instance and the camera that it has selected. One object at a time in a process; any thread may
    /// use it. Single accesses return when they are done; calls that run a job return a task, and all other calls but
    /// List, WaitAsync and Dispose are refused until the job's result was received.
    /// </summary>
    public sealed partial class Camera : IDisposable
    {
        private const byte Wide = 1;

        // State that exists once per process; the owner thread uses it.
        private static Camera current;
        private static Mutex claim;

        private bool starting;

        /// <summary>
        /// Creates the library's instance. While a job of a former Camera may still run, it takes over that Camera's
        /// instance, so that WaitAsync can wait for the job.
        /// </summary>
        public Camera() => Owner.Run(Open);

        /// <summary>Ends the instance. A running job continues.</summary>
        public void Dispose() => Owner.Run(Close);

        /// <summary>The cameras that are plugged in now. Call it after one was plugged in, not in a loop.</summary>
        public CameraInfo[] List() => Owner.Run(() =>
        {
            Refuse("List", true);
            if (!Functions.UsbUpdateDevice())
            {
                throw new BorvanException(ErrorKind.Access, "List: the system's list of cameras can't be read");
            }
            int index = 0;
            return Array.ConvertAll(Functions.UsbGetAllDeviceInfo(), device => new CameraInfo(index++, device));
        });

        /// <summary>
        /// Selects a camera of the list. One without a vendor unit is selected as well; then every access fails.
        /// </summary>
        public void Select(int index) => Owner.Run(() =>
        {
            Refuse("Select");
            bool selected = Functions.BorvanSelectDevice(index, out string message);
            if (message != null)
            {
                throw new BorvanException(ErrorKind.CannotOpen, $"Select: {message}");
            }
            if (!selected)
            {
                throw new BorvanException(
                    ErrorKind.NoSuchCamera,
                    $"Select: there is no camera with index {index}: the list has {Functions.UsbGetDeviceNum()}");
            }
        });

        /// <summary>Reads a register of the chip: 8 bits, or 32 if `wide`.</summary>
        public uint ReadRegister(uint address, bool wide = false) => Owner.Run(() =>
        {
            string what = $"ReadRegister({Arguments.Hex(address)})";
            Refuse(what);
            return Read(what, (ref uint value) => Functions.UsbRegisterRead(address, ref value, Flag(wide)));
        });

        /// <summary>Writes a register of the chip: 8 bits, or 32 if `wide`.</summary>
        public void WriteRegister(uint address, uint value, bool wide = false) => Owner.Run(() =>
        {
            string what = $"WriteRegister({Arguments.Hex(address)})";
            Refuse(what);
            Arguments.CheckNumber(what, "value", value, wide ? uint.MaxValue : 0xff);
            Check(what, Functions.UsbRegisterWrite(address, value, Flag(wide)));
        });

        /// <summary>
        /// Reads a register of a device on the I2C bus. `option` is sent to the chip as it is: 0 unless its maker says
        /// otherwise.
        /// </summary>
        public uint ReadI2c(byte slave, uint address, I2cMode mode, byte option = 0) => Owner.Run(() =>
        {
            string what = $"ReadI2c({Arguments.Hex(address)})";
            Refuse(what);
            Arguments.CheckI2c(what, address, mode);
            return Read(
                what, (ref uint value) => Functions.UsbI2cRead(slave, address, ref value, (int)mode, option));
        });

        /// <summary>Writes a register of a device on the I2C bus.</summary>
        public void WriteI2c(byte slave, uint address, uint value, I2cMode mode, byte option = 0) => Owner.Run(() =>
        {
            string what = $"WriteI2c({Arguments.Hex(address)})";
            Refuse(what);
            Arguments.CheckI2c(what, address, mode);
            Arguments.CheckNumber(what, "value", value, Arguments.LargestI2cValue(mode));
            Check(what, Functions.UsbI2cWrite(slave, address, value, (int)mode, option));
        });

        /// <summary>
        /// Programs four bytes of flash, the one at `address` in bits 24 to 31, which only clears bits. It neither
        /// reads back nor waits for the flash.
        /// </summary>
        public void WriteFlashWord(uint address, uint value) => Owner.Run(() =>
        {
            string what = $"WriteFlashWord({Arguments.Hex(address)})";
            Refuse(what);
            Check(what, Functions.UsbFlashWrite(address, value));
        });

        /// <summary>Erases the sector of 4096 bytes at `address`. It does not wait for the erase.</summary>
        public void EraseFlashSector(uint address) => Owner.Run(() =>
        {
            string what = $"EraseFlashSector({Arguments.Hex(address)})";
            Refuse(what);
            Arguments.CheckSector(what, address);
            Check(what, Functions.UsbFlashErase(address));
        });

        private delegate bool Access(ref uint value);

        private static byte Flag(bool wide) => wide ? Wide : (byte)0;

        private static void Check(string what, bool succeeded)
        {
            if (!succeeded)
            {
                throw new BorvanException(
                    ErrorKind.Access,
                    $"{what}: the access failed: no camera is open, or the camera refused a transfer");
            }
        }

        // After a reply to another request, the call also returns true and does not change the value.
        private static uint Read(string what, Access read)
        {
            foreach (uint before in new uint[] { 0xa5a5a5a5, 0x5a5a5a5a })
            {
                uint value = before;
                Check(what, read(ref value));
                if (value != before)
                {
                    return value;
                }
            }
            throw new BorvanException(ErrorKind.NoAnswer, $"{what}: the camera did not answer the request");
        }

        private static void Release()
        {
            claim?.Dispose();
            claim = null;
        }

        private void Open()
        {
            if (current != null || !Claim())
            {
                throw new BorvanException(ErrorKind.Busy, "Camera: another Camera exists: close it first");
            }
            if (Job.Pending != null && Job.Pending.HasEnded)
            {
                Job.Pending = null;
            }
            if (Job.Pending == null)
            {
                int code = Functions.UsbIniDevice();
                if (code < 0)
                {
                    Functions.UsbDestroyUSB();
                    Release();
                    throw BorvanException.OfStatus("Camera", unchecked((uint)code));
                }
            }
            current = this;
        }

        // Marks the process, with all that is loaded in it, as having a camera object.
        private static bool Claim()
        {
            if (claim != null)
            {
                return true; // a job of a former Camera has it still
            }
            using (Process process = Process.GetCurrentProcess())
            {
                var mark = new Mutex(false, $@"Local\BorvanUSB-binding-{process.Id}", out bool isNew);
                if (!isNew)
                {
                    mark.Dispose();
                    return false;
                }
                claim = mark;
            }
            return true;
        }

        // Does not end the instance while a job may run, because this makes a transfer.
        private void Close()
        {
            if (current != this)
            {
                return;
            }
            current = null;
            if (Job.Pending == null)
            {
                Functions.UsbDestroyUSB();
                Release();
                return;
            }
            Job.Pending.End.ContinueWith(
                _ => Owner.Run(() =>
                {
                    if (current == null)
                    {
                        Release();
                    }
                }),
                TaskScheduler.Default);
        }

        // On the owner thread.
        private void Refuse(string what, bool duringJob = false)
        {
            if (current != this)
            {
                throw new BorvanException(ErrorKind.Closed, $"{what}: the camera object is closed");
            }
            if (!duringJob && (starting || Job.Pending != null))
            {
                throw new BorvanException(
                    ErrorKind.Busy, $"{what}: a job may still be running: wait for it with WaitAsync()");
            }
        }
    }
}
