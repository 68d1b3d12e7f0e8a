"""The 21 functions of BorvanUSB_x64.dll as they are, with types. borvan_usb.h describes them."""
# pylint: disable=invalid-name,missing-function-docstring,too-many-arguments
import ctypes
import os
import pathlib
from typing import Any, List, Optional, Tuple

LIBRARY_VARIABLE = "BORVANUSB_LIBRARY"  # full name of the DLL, instead of the one in the package
PACKAGE = pathlib.Path(__file__).resolve().parent


class UsbDeviceInfo(ctypes.Structure):
    """One camera. The texts are full fields when nothing terminates them."""
    # By offsets and not by `c_char`, which reads to the first zero only.
    _fields_ = [
        ("path", ctypes.c_ubyte * 120),
        ("name", ctypes.c_ubyte * 120),
        ("vendor_id", ctypes.c_ubyte * 4),
        ("product_id", ctypes.c_ubyte * 4),
    ]

    def text(self, field: str) -> str:
        """A field as a text, decoded from the ANSI code page."""
        return decode(bytes(getattr(self, field)).split(b"\0")[0])


def decode(text: bytes) -> str:
    return text.decode("mbcs" if os.name == "nt" else "latin-1", errors="replace")


def encode(name: "os.PathLike[str] | str") -> bytes:
    """A file name in the ANSI code page; UnicodeError when that has no such character."""
    text = os.fspath(name)
    return text.encode("mbcs", errors="strict") if os.name == "nt" else os.fsencode(text)


_u32 = ctypes.c_uint32
_u32_pointer = ctypes.POINTER(ctypes.c_uint32)
_FUNCTIONS: Tuple[Tuple[str, Any, List[Any]], ...] = (
    ("UsbIniDevice", ctypes.c_int32, []),
    ("UsbUpdateDevice", ctypes.c_bool, []),
    ("UsbGetDeviceNum", ctypes.c_int32, []),
    ("UsbGetAllDeviceInfo", ctypes.POINTER(UsbDeviceInfo), []),
    ("UsbGetSelectDeviceInfo", UsbDeviceInfo, []),
    ("UsbSelectDevice", ctypes.c_bool, [ctypes.c_int32]),
    ("UsbDestroyUSB", ctypes.c_bool, []),
    ("UsbRegisterRead", ctypes.c_bool, [_u32, _u32_pointer, ctypes.c_uint8]),
    ("UsbRegisterWrite", ctypes.c_bool, [_u32, _u32, ctypes.c_uint8]),
    ("UsbI2cRead", ctypes.c_bool, [_u32, _u32, _u32_pointer, ctypes.c_int32, _u32]),
    ("UsbI2cWrite", ctypes.c_bool, [_u32, _u32, _u32, ctypes.c_int32, _u32]),
    ("UsbFlashRead", ctypes.c_bool, [_u32, _u32_pointer]),
    ("UsbFlashWrite", ctypes.c_bool, [_u32, _u32]),
    ("UsbFlashErase", ctypes.c_bool, [_u32]),
    ("UsbFlashWriteFile", ctypes.c_bool, [ctypes.c_char_p, _u32]),
    ("UsbFlashQuickReadFile", ctypes.c_bool, [ctypes.c_char_p, _u32, _u32]),
    ("UsbRegisterReadFile", ctypes.c_bool, [ctypes.c_char_p, _u32, _u32]),
    ("UsbRegisterWriteFile", ctypes.c_bool, [ctypes.c_char_p]),
    ("UsbI2CReadFile", ctypes.c_bool, [_u32, _u32, ctypes.c_char_p, ctypes.c_int32, _u32]),
    ("UsbI2CWriteFile", ctypes.c_bool, [ctypes.c_char_p, _u32]),
    ("GetProgressInfo", ctypes.c_uint64, []),
)


class Library:
    """The loaded DLL. Texts are bytes in the ANSI code page; a read returns (success, value)."""

    def __init__(self, file: Optional[str] = None) -> None:
        path = pathlib.Path(file or os.environ.get(LIBRARY_VARIABLE) or PACKAGE / "BorvanUSB_x64.dll")
        self._dll = ctypes.CDLL(str(path))
        for name, result, arguments in _FUNCTIONS:
            function = getattr(self._dll, name)
            function.restype = result
            function.argtypes = arguments
        # The DLL throws a C++ exception where this function returns.
        with_select = self._dll
        if os.name == "nt":
            with_select = ctypes.CDLL(str(path.with_name("borvanusb_select.dll")))
        self._select = with_select.borvan_select_device
        self._select.restype = ctypes.c_bool
        self._select.argtypes = [ctypes.c_int32, ctypes.POINTER(ctypes.c_char_p)]

    def borvan_select_device(self, index: int) -> Tuple[bool, Optional[str]]:
        """As UsbSelectDevice, without its exception: (success, reason why the camera can't be opened)."""
        message = ctypes.c_char_p()
        selected = self._select(index, ctypes.byref(message))
        return bool(selected), None if message.value is None else decode(message.value)

    def UsbIniDevice(self) -> int:
        return int(self._dll.UsbIniDevice())

    def UsbUpdateDevice(self) -> bool:
        return bool(self._dll.UsbUpdateDevice())

    def UsbGetDeviceNum(self) -> int:
        return int(self._dll.UsbGetDeviceNum())

    def UsbGetAllDeviceInfo(self) -> List[UsbDeviceInfo]:
        """The records of all cameras, copied. Each call leaks the library's array."""
        count = self.UsbGetDeviceNum()
        records = self._dll.UsbGetAllDeviceInfo() if count > 0 else None
        return [UsbDeviceInfo.from_buffer_copy(records[i]) for i in range(count)]

    def UsbGetSelectDeviceInfo(self) -> UsbDeviceInfo:
        record: UsbDeviceInfo = self._dll.UsbGetSelectDeviceInfo()
        return record

    def UsbSelectDevice(self, index: int) -> bool:
        """Throws a C++ exception when the camera can't be opened: use borvan_select_device."""
        return bool(self._dll.UsbSelectDevice(index))

    def UsbDestroyUSB(self) -> bool:
        return bool(self._dll.UsbDestroyUSB())

    def UsbRegisterRead(self, address: int, flag: int, before: int = 0) -> Tuple[bool, int]:
        """`before` is what the value is when the library stores none."""
        value = _u32(before)
        return bool(self._dll.UsbRegisterRead(address, ctypes.byref(value), flag)), value.value

    def UsbRegisterWrite(self, address: int, value: int, flag: int) -> bool:
        return bool(self._dll.UsbRegisterWrite(address, value, flag))

    def UsbI2cRead(self, device_id: int, register_address: int, mode: int, option: int,
                   before: int = 0) -> Tuple[bool, int]:
        value = _u32(before)
        return bool(self._dll.UsbI2cRead(device_id, register_address, ctypes.byref(value), mode,
                                         option)), value.value

    def UsbI2cWrite(self, device_id: int, register_address: int, value: int, mode: int,
                    option: int) -> bool:
        return bool(self._dll.UsbI2cWrite(device_id, register_address, value, mode, option))

    def UsbFlashRead(self, address: int) -> Tuple[bool, int]:
        """The value is 0 when the read failed, and success is true all the same."""
        value = _u32(0)
        return bool(self._dll.UsbFlashRead(address, ctypes.byref(value))), value.value

    def UsbFlashWrite(self, address: int, value: int) -> bool:
        return bool(self._dll.UsbFlashWrite(address, value))

    def UsbFlashErase(self, address: int) -> bool:
        return bool(self._dll.UsbFlashErase(address))

    def UsbFlashWriteFile(self, file_name: bytes, start_address: int) -> bool:
        return bool(self._dll.UsbFlashWriteFile(file_name, start_address))

    def UsbFlashQuickReadFile(self, file_name: bytes, start_address: int, end_address: int) -> bool:
        return bool(self._dll.UsbFlashQuickReadFile(file_name, start_address, end_address))

    def UsbRegisterReadFile(self, file_name: bytes, start_address: int, end_address: int) -> bool:
        return bool(self._dll.UsbRegisterReadFile(file_name, start_address, end_address))

    def UsbRegisterWriteFile(self, file_name: bytes) -> bool:
        return bool(self._dll.UsbRegisterWriteFile(file_name))

    def UsbI2CReadFile(self, start_address: int, end_address: int, file_name: bytes, slave: int,
                       mode: int) -> bool:
        return bool(self._dll.UsbI2CReadFile(start_address, end_address, file_name, slave, mode))

    def UsbI2CWriteFile(self, file_name: bytes, option: int) -> bool:
        return bool(self._dll.UsbI2CWriteFile(file_name, option))

    def GetProgressInfo(self) -> int:
        return int(self._dll.GetProgressInfo())
