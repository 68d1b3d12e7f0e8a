using System;

namespace BorvanUsb
{
    /// <summary>The kind of error.</summary>
    public enum ErrorKind
    {
        /// <summary>An argument is not allowed; nothing was done.</summary>
        Argument,
        /// <summary>A job may still run, or another Camera exists in the process.</summary>
        Busy,
        /// <summary>The Camera was closed.</summary>
        Closed,
        /// <summary>No camera has this index.</summary>
        NoSuchCamera,
        /// <summary>The camera can't be opened.</summary>
        CannotOpen,
        /// <summary>A single access failed; the library gives no code.</summary>
        Access,
        /// <summary>The transfers succeeded, but the reply belongs to another request.</summary>
        NoAnswer,
        /// <summary>A register list does not begin with 0xfffd.</summary>
        NothingWritten,
        /// <summary>A job failed, with a status code.</summary>
        Status,
        /// <summary>A job did not end in time and may still run.</summary>
        TimeLimit,
        /// <summary>The end of a job was missed.</summary>
        EndMissed,
        /// <summary>borvanusb can't be started, or ended without a result.</summary>
        Process,
        /// <summary>borvanusb reported a failure: see ProgramException.</summary>
        Program,
    }

    /// <summary>A failure. The message is "CALL: REASON".</summary>
    public class BorvanException : Exception
    {
        internal BorvanException(ErrorKind kind, string message, uint status = 0, Exception cause = null)
            : base(message, cause)
        {
            Kind = kind;
            Status = status;
        }

        public ErrorKind Kind { get; }

        /// <summary>The code of borvan_usb_status.h of a failed job; otherwise 0.</summary>
        public uint Status { get; }

        internal static BorvanException OfStatus(string what, uint status)
        {
            ErrorKind kind = status == BorvanStatus.WaitTimeLimit ? ErrorKind.TimeLimit
                : status == BorvanStatus.WaitEndMissed ? ErrorKind.EndMissed
                : ErrorKind.Status;
            return new BorvanException(kind, $"{what}: {BorvanStatus.Text(status)}", status);
        }
    }

    /// <summary>borvanusb reported a failure.</summary>
    public sealed class ProgramException : BorvanException
    {
        internal ProgramException(int exitCode, string exitKind, string message, string hint)
            : base(ErrorKind.Program, $"ProgramFlash: {message}")
        {
            ExitCode = exitCode;
            ExitKind = exitKind;
            Hint = hint;
        }

        /// <summary>The exit code of borvanusb, 1 to 10.</summary>
        public int ExitCode { get; }

        /// <summary>
        /// The exit code's name: usage, no-camera, several-cameras, refused, file, device, verify, timeout, stopped or
        /// internal.
        /// </summary>
        public string ExitKind { get; }

        /// <summary>What to do, with the command lines that continue or go back; may be empty.</summary>
        public string Hint { get; }
    }
}
