"""What may be handed to the library: contiguous arrays of the right type, shape and size."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

from ._formats import YUV411, Format, FormatLike, find_format, frame_shape

# Every buffer of a frame or picture up to this many pixels fits 32 bits, as the library requires.
MAX_PIXELS = 1 << 28

Array = npt.NDArray[Any]
Size = Tuple[int, int]


class Source(NamedTuple):
    """A checked frame; keeps its memory alive."""

    array: Array
    format: Format
    width: int
    height: int

    @property
    def address(self) -> int:
        return address(self.array)

    def __str__(self) -> str:
        return f"{self.format.name} {self.width}x{self.height}"


def address(array: Array) -> int:
    return int(array.__array_interface__["data"][0])


def _array_of(data: Any, what: str) -> Array:
    if isinstance(data, np.ndarray):
        array = data
    else:
        try:
            array = np.frombuffer(data, np.uint8)
        except (TypeError, ValueError, BufferError, AttributeError):
            raise TypeError(f"{what} is an array or bytes, not {type(data).__name__}") from None
    if not array.flags.c_contiguous:
        raise ValueError(
            f"{what} is not contiguous (strides {array.strides}); pass numpy.ascontiguousarray(...) of it"
        )
    return array


def check_size(format: Format, width: int, height: int) -> None:
    if width < 1 or height < 1:
        raise ValueError(f"a {width}x{height} frame is empty; width and height have to be 1 or more")
    if width * height > MAX_PIXELS:
        raise ValueError(
            f"a {width}x{height} frame is too large; {MAX_PIXELS} pixels is the limit, convert it in parts"
        )
    if width % format.width_unit or height % format.height_unit:
        unit = f"a width that is a multiple of {format.width_unit}"
        if format.height_unit > 1:
            unit += f" and a height that is a multiple of {format.height_unit}"
        raise ValueError(f"{format.name} frames have {unit}; this one is {width}x{height}: crop it")


def _size_of(array: Array, format: Format) -> Size:
    """The size of the frame that an array holds by its shape."""
    if format.has_padded_rows:
        raise ValueError(
            f"the array of a {format.name} frame does not say its width; pass size=(width, height)"
        )
    channels = frame_shape(format, 4, 1)[2:]
    if array.ndim != 2 + len(channels) or array.shape[2:] != channels:
        row = "width * 3 / 2" if format.name == YUV411 else "width"
        shape = ", ".join(["height", row, *map(str, channels)])
        raise ValueError(
            f"a {format.name} frame has the shape ({shape}), not {array.shape}; reshape it, or pass size=(width, height)"
        )
    height, across = array.shape[:2]
    return (across if format.name != YUV411 else across * 2 // 3), height


def check_source(
    data: Any, format: FormatLike, size: Optional[Sequence[int]] = None, what: str = "frame"
) -> Source:
    """A frame as an array of its shape, or, with its size, any buffer of exactly its bytes."""
    format = find_format(format)
    array = _array_of(data, what)
    samples = np.dtype("<u2") if format.sample_bytes == 2 else np.dtype(np.uint8)
    raw = size is not None and array.dtype == np.uint8
    if array.dtype != samples and not raw:
        raise TypeError(
            f"a {format.name} {what} has samples of type {samples.name}, not {array.dtype}; "
            f"convert it with astype(numpy.{samples.name})"
        )
    if size is None:
        width, height = _size_of(array, format)
    else:
        if len(size) != 2:
            raise ValueError(f"size is (width, height), not {tuple(size)}")
        width, height = int(size[0]), int(size[1])
    check_size(format, width, height)
    needed = format.row_bytes(width) * height
    if array.nbytes != needed:
        raise ValueError(
            f"a {format.name} {what} of {width}x{height} has {needed} bytes, not {array.nbytes}; check size and format"
        )
    return Source(array, format, width, height)


def output(
    out: Optional[Array], shape: Tuple[int, ...], dtype: Any, sources: Sequence[Array], what: str = "out"
) -> Array:
    """The array to write to: a new one, or `out` when it may be written to as it is."""
    dtype = np.dtype(dtype)
    if out is None:
        return np.empty(shape, dtype)
    if not isinstance(out, np.ndarray):
        raise TypeError(f"{what} is a numpy array, not {type(out).__name__}")
    if out.dtype != dtype:
        raise TypeError(
            f"{what} has the type {dtype.name}, not {out.dtype}; make it with numpy.empty({shape}, numpy.{dtype.name})"
        )
    if out.shape != shape:
        raise ValueError(
            f"{what} has the shape {shape}, not {out.shape}; make it with numpy.empty({shape}, numpy.{dtype.name})"
        )
    if not out.flags.c_contiguous:
        raise ValueError(
            f"{what} is not contiguous (strides {out.strides}); make it with numpy.empty({shape}, numpy.{dtype.name})"
        )
    if not out.flags.writeable:
        raise ValueError(f"{what} is read-only; pass an array that may be written to")
    for source in sources:
        if np.may_share_memory(out, source):
            raise ValueError(f"{what} shares memory with another array of the call; use a new one")
    return out
