using System.Collections.Generic;

namespace BorvanUsb
{
    /// <summary>Status codes and their texts, as in borvan_usb_status.h.</summary>
    public static class BorvanStatus
    {
        public const uint FileError = 0xe000000a;
        public const uint WaitTimeLimit = 0xe0001001;
        public const uint WaitEndMissed = 0xe0001002;

        // A positive status: the list of registers has no opening.
        internal const uint NothingWritten = 11;

        private static readonly Dictionary<uint, string> Texts = new Dictionary<uint, string>
        {
            [0] = "no failure",
            [0xe0000001] = "Flash failed to erase",
            [0xe0000002] = "GetLen fails in channel",
            [0xe0000003] = "Flash write  failed", // programs compare the texts: the two spaces stay
            [0xe0000004] = "Invalid address",
            [0xe0000005] = "Flash read failed",
            [0xe0000006] = "Termination of work",
            [0xe0000007] = "The Fast interface failed to execute",
            [0xe0000008] = "The values of fff8 and fffe were not obtained",
            [0xe0000009] = "Device not found",
            [FileError] = "File name error or file error",
            [0xe000000b] = "File format failed",
            [WaitTimeLimit] = "The job did not end within the time limit",
            [WaitEndMissed] = "The job's last report was cleared before it was read",
            [0x80004001] = "not implemented",
            [0x80004003] = "no camera is open",
            [0x80004005] = "failed, without a reason",
            [0x80070001] = "the camera's driver does not support the request",
            [0x80070005] = "access denied",
            [0x80070006] = "the camera was closed",
            [0x8007000d] = "the camera reported an impossible length",
            [0x8007000e] = "out of memory",
            [0x80070015] = "the camera is not ready",
            [0x80070017] = "data error on the bus",
            [0x8007001f] = "the camera refused the transfer",
            [0x80070057] = "the camera's driver refused an argument",
            [0x80070079] = "the camera did not answer in time",
            [0x800705b4] = "the camera did not answer in time",
            [0x8007007a] = "the camera's answer is longer than the transfer",
            [0x800701b1] = "the camera is not connected any more",
            [0x8007048f] = "the camera is not connected any more",
            [0x800703e3] = "the transfer was aborted",
            [0x80070490] = "the camera's vendor unit has no such control",
            [0x80070492] = "the camera has no such vendor unit",
        };

        /// <summary>A text for any status.</summary>
        public static string Text(uint status)
        {
            if (Texts.TryGetValue(status, out string text))
            {
                return text;
            }
            return status < 0x80000000 ? "no failure: a positive status"
                                       : "error code of the system or of the camera's driver";
        }
    }

    public enum ProgressState
    {
        Running,
        Done,
        Failed,
        Notice,
    }

    /// <summary>The meaning of a value of GetProgressInfo, as in borvan_usb_values.h.</summary>
    public readonly struct JobProgress
    {
        public JobProgress(ulong value)
        {
            int percent = unchecked((int)(uint)value);
            int status = unchecked((int)(uint)(value >> 32));
            Status = unchecked((uint)status);
            Percent = status == 0 ? percent : 0;
            // A value that combines halves of two reports counts as running: the next poll sees the whole report.
            State = status == 0 ? (percent == 100 ? ProgressState.Done : ProgressState.Running)
                : percent != 0 ? ProgressState.Running
                : status < 0 ? ProgressState.Failed
                : ProgressState.Notice;
        }

        public ProgressState State { get; }

        /// <summary>0 to 100; 0 together with every status but 0.</summary>
        public int Percent { get; }

        public uint Status { get; }
    }
}
