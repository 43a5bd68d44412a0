"""Raw frames of industrial cameras as numpy arrays: convert, mirror, make, load and save them.

    import prismoutl

    bgr = prismoutl.convert(frame, "BayerRG12", to="BGR", demosaic="adaptive")

Arrays are checked before every call (dtype, shape, layout, size, writeable) and handed to the library as they are:
nothing is copied. The GIL is released while the library works. `FORMATS` lists the pixel formats.
"""

from ._convert import convert, convert_planes, mirror, mirrored_format, mosaic
from ._errors import (
    Error,
    Failure,
    FileNotFound,
    FileOpenError,
    FileReadError,
    FileWriteError,
    InvalidParameter,
    PoolClosed,
    Timeout,
)
from ._files import Frame, load_raw, save_bmp, save_jpeg, save_raw
from ._formats import FORMATS, Format, frame_shape
from ._pool import Pool, settings

__all__ = [
    "Error",
    "FORMATS",
    "Failure",
    "FileNotFound",
    "FileOpenError",
    "FileReadError",
    "FileWriteError",
    "Format",
    "Frame",
    "InvalidParameter",
    "Pool",
    "PoolClosed",
    "Timeout",
    "convert",
    "convert_planes",
    "frame_shape",
    "load_raw",
    "mirror",
    "mirrored_format",
    "mosaic",
    "save_bmp",
    "save_jpeg",
    "save_raw",
    "settings",
]
