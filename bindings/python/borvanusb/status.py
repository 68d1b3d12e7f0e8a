"""Status codes and their texts, those of borvan_usb_status.h."""

FILE_ERROR = 0xE000000A
OUT_OF_MEMORY = 0x8007000E
WAIT_TIME_LIMIT = 0xE0001001
WAIT_END_MISSED = 0xE0001002
FIRST_FAILURE = 0x80000000

_TEXTS = {
    0: "no failure",
    0x80004001: "not implemented",
    0x80004003: "no camera is open",
    0x80004005: "failed, without a reason",
    0x80070001: "the camera's driver does not support the request",
    0x80070005: "access denied",
    0x80070006: "the camera was closed",
    0x8007000D: "the camera reported an impossible length",
    0x8007000E: "out of memory",
    0x80070015: "the camera is not ready",
    0x80070017: "data error on the bus",
    0x8007001F: "the camera refused the transfer",
    0x80070057: "the camera's driver refused an argument",
    0x80070079: "the camera did not answer in time",
    0x8007007A: "the camera's answer is longer than the transfer",
    0x800701B1: "the camera is not connected any more",
    0x800703E3: "the transfer was aborted",
    0x8007048F: "the camera is not connected any more",
    0x80070490: "the camera's vendor unit has no such control",
    0x80070492: "the camera has no such vendor unit",
    0x800705B4: "the camera did not answer in time",
    0xE0000001: "Flash failed to erase",
    0xE0000002: "GetLen fails in channel",
    0xE0000003: "Flash write  failed",  # programs compare the texts: the two spaces stay
    0xE0000004: "Invalid address",
    0xE0000005: "Flash read failed",
    0xE0000006: "Termination of work",
    0xE0000007: "The Fast interface failed to execute",
    0xE0000008: "The values of fff8 and fffe were not obtained",
    0xE0000009: "Device not found",
    0xE000000A: "File name error or file error",
    0xE000000B: "File format failed",
    WAIT_TIME_LIMIT: "The job did not end within the time limit",
    WAIT_END_MISSED: "The job's last report was cleared before it was read",
}


def status_text(status: int) -> str:
    """A text for any status code, as borvan_status_text has it."""
    text = _TEXTS.get(status)
    if text is not None:
        return text
    if status < FIRST_FAILURE:
        return "no failure: a positive status"
    return "error code of the system or of the camera's driver"
