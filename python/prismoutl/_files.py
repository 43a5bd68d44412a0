"""Raw frame files, BMP and JPEG."""

from __future__ import annotations

import os
from ctypes import byref, c_uint32, c_void_p
from typing import Any, NamedTuple, Optional, Sequence, Union

import numpy as np

from ._buffers import Array, address, check_size, check_source
from ._errors import FileOpenError, FileReadError, InvalidParameter, check
from ._formats import BY_CODE, Format, FormatLike, frame_shape
from ._native import library
from ._pool import whole_number

Path = Union[str, "os.PathLike[str]"]

_HEADER_BYTES = 16


class Frame(NamedTuple):
    """A frame of a raw frame file; `data` has the shape that `frame_shape` says."""

    data: Array
    format: Format
    width: int
    height: int


class Layout(NamedTuple):
    width: int
    height: int
    channels: int


def layout_of(picture: Any) -> Layout:
    """Checks a picture: uint8, contiguous, (height, width) for grey or (height, width, 3 or 4) for BGR and BGRA."""
    if not isinstance(picture, np.ndarray):
        raise TypeError(f"a picture is a numpy array, not {type(picture).__name__}")
    if picture.dtype != np.uint8:
        raise TypeError(f"a picture has the type uint8, not {picture.dtype}")
    if picture.ndim not in (2, 3) or picture.ndim == 3 and picture.shape[2] not in (3, 4):
        raise ValueError(
            f"a picture has the shape (height, width), (height, width, 3) or (height, width, 4), not {picture.shape}"
        )
    if not picture.flags.c_contiguous:
        raise ValueError(
            f"the picture is not contiguous (strides {picture.strides}); pass numpy.ascontiguousarray(...) of it"
        )
    layout = Layout(picture.shape[1], picture.shape[0], 1 if picture.ndim == 2 else picture.shape[2])
    check_size(BY_CODE[0x01080001], layout.width, layout.height)
    return layout


def save_bmp(path: Path, picture: Array) -> None:
    """Writes a grey, BGR or BGRA picture as a BMP file."""
    layout = layout_of(picture)
    save = {1: library.SaveBmpMonoStrm, 3: library.SaveBmpRGBStrm, 4: library.SaveBmpARGBStrm}[
        layout.channels
    ]
    status = save(
        address(picture), layout.width, layout.height, layout.width * layout.channels, os.fsencode(path)
    )
    check(status, f"writing {os.fspath(path)!r}")


def save_jpeg(path: Path, picture: Array, quality: Optional[int] = None) -> None:
    """Writes a BGR or BGRA picture as a JPEG file; quality 0 to 100, by default the encoder's."""
    layout = layout_of(picture)
    if layout.channels == 1:
        raise ValueError(
            "JPEG files are made of BGR or BGRA pictures, (height, width, 3 or 4), not of grey ones"
        )
    if quality is not None:
        quality = whole_number("quality", quality, 0, 100)
    kind = 1 if layout.channels == 3 else 0
    size = layout.width, layout.height
    if quality is None:
        status = library.SaveJpeg(address(picture), kind, *size, os.fsencode(path))
    else:
        status = library.SaveJpegQ(address(picture), kind, quality, *size, os.fsencode(path))
    check(status, f"writing {os.fspath(path)!r}")


def save_raw(
    path: Path, frame: Any, format: Optional[FormatLike] = None, *, size: Optional[Sequence[int]] = None
) -> None:
    """Writes a frame as a raw frame file. The arguments of the frame are as for `convert`."""
    if isinstance(frame, Frame):
        source = check_source(frame.data, format or frame.format, size or (frame.width, frame.height))
    elif format is None:
        raise TypeError("a frame that is not a prismoutl.Frame needs its format, for example 'BayerRG12'")
    else:
        source = check_source(frame, format, size)
    status = library.SaveRWH(
        source.address, source.format.code, source.width, source.height, os.fsencode(path)
    )
    check(status, f"writing {os.fspath(path)!r}")


def load_raw(path: Path) -> Frame:
    """Loads a raw frame file, whole or not at all."""
    code, width, height, row_bytes = c_uint32(), c_uint32(), c_uint32(), c_uint32()
    name, operation = os.fsencode(path), f"reading {os.fspath(path)!r}"
    # Without a buffer, the header alone.
    status = library.LoadRWH(name, None, byref(code), byref(width), byref(height), byref(row_bytes))
    if status != InvalidParameter.status:
        check(status, operation)
    if os.path.isdir(path):
        raise FileOpenError(f"{operation}: it is a folder")
    size = os.stat(path).st_size
    if size < _HEADER_BYTES:
        raise FileReadError(f"{operation}: {size} bytes, where the header alone has {_HEADER_BYTES}")
    format = BY_CODE.get(code.value)
    if format is None:
        raise FileReadError(f"{operation}: there is no pixel format with code {code.value:#010x}")
    try:
        check_size(format, width.value, height.value)
    except ValueError as error:
        raise FileReadError(f"{operation}: {error}") from None
    needed = _HEADER_BYTES + format.row_bytes(width.value) * height.value
    if row_bytes.value != format.row_bytes(width.value):
        raise FileReadError(
            f"{operation}: rows of {row_bytes.value} bytes, where {format.name} of this width has {format.row_bytes(width.value)}"
        )
    if size < needed:
        raise FileReadError(f"{operation}: {size} bytes, where its header says {needed}")

    shape = frame_shape(format, width.value, height.value)
    data = np.empty(shape, "<u2" if format.sample_bytes == 2 else np.uint8)
    buffer = c_void_p(address(data))
    check(library.LoadRWH(name, byref(buffer), None, None, None, None), operation)
    return Frame(data, format, width.value, height.value)
