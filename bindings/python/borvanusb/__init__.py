"""BorvanUSB: registers, sensors and flash of a USB camera.

    from borvanusb import Camera

    with Camera() as camera:
        camera.select(0)
        print(hex(camera.read_register(0x1a3)))

`program_flash` programs a flash the safe way. `Library` has the 21 functions of the DLL as they are.
"""
from .camera import Camera, CameraInfo, I2cMode
from .errors import (ArgumentError, BorvanError, BusyError, CameraNotFoundError, JobError, ProcessError,
                     ProgramError, TimeLimitError)
from .library import Library, UsbDeviceInfo
from .program import (FlashRange, ProgramProgress, ProgramResult, program_flash, program_flash_iter)
from .status import status_text

__all__ = [
    "ArgumentError", "BorvanError", "BusyError", "Camera", "CameraInfo", "CameraNotFoundError",
    "FlashRange", "I2cMode", "JobError", "Library", "ProcessError", "ProgramError",
    "ProgramProgress", "ProgramResult", "TimeLimitError", "UsbDeviceInfo", "program_flash",
    "program_flash_iter", "status_text",
]
