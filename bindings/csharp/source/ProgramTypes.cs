using System.Runtime.Serialization;

namespace BorvanUsb
{
    /// <summary>How an image is programmed; see the guide to the tool.</summary>
    public sealed class ProgramOptions
    {
        /// <summary>Where the image begins in the flash; default 0.</summary>
        public uint Address { get; set; }

        /// <summary>Index, IDs such as "1234:0002", name or path; needed when several cameras are plugged in.</summary>
        public string Camera { get; set; }

        /// <summary>Size of the flash, such as "1M", if the tool can't detect it.</summary>
        public string FlashSize { get; set; }

        /// <summary>File for the old bytes. Default: a file beside the image.</summary>
        public string Backup { get; set; }

        /// <summary>Make no backup.</summary>
        public bool NoBackup { get; set; }

        /// <summary>Do not read back.</summary>
        public bool NoVerify { get; set; }

        /// <summary>Only show what would be done.</summary>
        public bool DryRun { get; set; }

        /// <summary>Restore the old bytes when programming fails.</summary>
        public bool RestoreOnFailure { get; set; }

        /// <summary>Program a file that does not look like firmware.</summary>
        public bool Force { get; set; }

        /// <summary>The journal that belongs to this camera, or "none".</summary>
        public string Journal { get; set; }

        /// <summary>File for a report. It is also written after a failure.</summary>
        public string Report { get; set; }

        /// <summary>Maximum time without progress, in seconds: 0.1 to 3600; default 10.</summary>
        public double? TimeoutSeconds { get; set; }
    }

    /// <summary>See docs/json/progress.schema.json.</summary>
    [DataContract]
    public sealed class ProgramProgress
    {
        [DataMember(Name = "stage")] public string Stage { get; private set; }
        [DataMember(Name = "done")] public long Done { get; private set; }
        [DataMember(Name = "total")] public long Total { get; private set; }
        [DataMember(Name = "unit")] public string Unit { get; private set; }
        [DataMember(Name = "percent")] public int Percent { get; private set; }
        [DataMember(Name = "rate")] public long? Rate { get; private set; }
        [DataMember(Name = "seconds_left")] public long? SecondsLeft { get; private set; }
    }

    [DataContract]
    public sealed class FlashRange
    {
        [DataMember(Name = "first")] public long First { get; private set; }

        /// <summary>Included.</summary>
        [DataMember(Name = "last")] public long Last { get; private set; }
    }

    [DataContract]
    public sealed class ProgramCamera
    {
        [DataMember(Name = "index")] public int Index { get; private set; }
        [DataMember(Name = "name")] public string Name { get; private set; }
        [DataMember(Name = "vid")] public string Vid { get; private set; }
        [DataMember(Name = "pid")] public string Pid { get; private set; }
        [DataMember(Name = "path")] public string Path { get; private set; }
    }

    [DataContract]
    public sealed class ProgramImage
    {
        [DataMember(Name = "file")] public string File { get; private set; }
        [DataMember(Name = "size")] public long Size { get; private set; }
        [DataMember(Name = "sha256")] public string Sha256 { get; private set; }
    }

    [DataContract]
    public sealed class ProgramSeconds
    {
        [DataMember(Name = "read")] public double Read { get; private set; }
        [DataMember(Name = "program")] public double Program { get; private set; }
        [DataMember(Name = "verify")] public double Verify { get; private set; }
        [DataMember(Name = "total")] public double Total { get; private set; }
    }

    /// <summary>See docs/json/flash-program.schema.json.</summary>
    [DataContract]
    public sealed class ProgramResult
    {
        [DataMember(Name = "camera")] public ProgramCamera Camera { get; private set; }
        [DataMember(Name = "image")] public ProgramImage Image { get; private set; }
        [DataMember(Name = "address")] public long Address { get; private set; }
        [DataMember(Name = "flash_size")] public long? FlashSize { get; private set; }
        [DataMember(Name = "dry_run")] public bool DryRun { get; private set; }
        [DataMember(Name = "sectors")] public long Sectors { get; private set; }
        [DataMember(Name = "changed")] public FlashRange[] Changed { get; private set; }
        [DataMember(Name = "changed_bytes")] public long ChangedBytes { get; private set; }
        [DataMember(Name = "transfers")] public long Transfers { get; private set; }
        [DataMember(Name = "expected_seconds")] public double ExpectedSeconds { get; private set; }

        /// <summary>The file with the old bytes; null when none was made.</summary>
        [DataMember(Name = "backup")] public string Backup { get; private set; }

        /// <summary>Whether the bytes that were read back are right; null when nothing was read back.</summary>
        [DataMember(Name = "verified")] public bool? Verified { get; private set; }

        /// <summary>unchanged, partial, written, done, restoring or restored.</summary>
        [DataMember(Name = "state")] public string State { get; private set; }
        [DataMember(Name = "written")] public FlashRange[] Written { get; private set; }
        [DataMember(Name = "unfinished")] public FlashRange[] Unfinished { get; private set; }
        [DataMember(Name = "remaining")] public FlashRange[] Remaining { get; private set; }
        [DataMember(Name = "wrong")] public FlashRange[] Wrong { get; private set; }
        [DataMember(Name = "started")] public string Started { get; private set; }
        [DataMember(Name = "finished")] public string Finished { get; private set; }
        [DataMember(Name = "seconds")] public ProgramSeconds Seconds { get; private set; }
        [DataMember(Name = "result")] public string Result { get; private set; }
        [DataMember(Name = "exit_code")] public int ExitCode { get; private set; }
        [DataMember(Name = "message")] public string Message { get; private set; }
        [DataMember(Name = "hint")] public string Hint { get; private set; }
    }

    // What else the tool prints.
    [DataContract]
    internal sealed class ProgressLine
    {
        [DataMember(Name = "progress")] internal ProgramProgress Progress { get; private set; }
    }

    [DataContract]
    internal sealed class FailureReply
    {
        [DataMember(Name = "error")] internal Failure Error { get; private set; }
    }

    [DataContract]
    internal sealed class Failure
    {
        [DataMember(Name = "code")] internal int Code { get; private set; }
        [DataMember(Name = "kind")] internal string Kind { get; private set; }
        [DataMember(Name = "message")] internal string Message { get; private set; }
        [DataMember(Name = "hint")] internal string Hint { get; private set; }
    }
}
