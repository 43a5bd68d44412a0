"""Conversions, mirrors and the making of frames."""

from __future__ import annotations

from ctypes import c_int32
from typing import Any, Optional, Sequence, Tuple

import numpy as np

from ._buffers import Array, Source, address, check_size, check_source, output
from ._errors import check
from ._files import Frame, layout_of
from ._formats import BY_CODE, Format, FormatLike, find_format, frame_shape
from ._native import library
from ._pool import Threads, check_pooled, default_demosaic, uses_pool

_BGRA, _BGR, _PAD = 0, 1, 2
_OUTPUTS = {"BGRA": _BGRA, "BGR": _BGR, "BGRPad": _PAD, "grey": None}
_METHODS = {"bilinear": 0, "adaptive": 1, "none": 8}
_MONO_OF_DEPTH = {10: 0x01100003, 12: 0x01100005, 16: 0x01100007}

# Of each Bayer phase the channels at the top left, bottom left, top right and bottom right: 0 blue, 1 green, 2 red.
_SITES = tuple((c_int32 * 4)(*sites) for sites in ((1, 0, 2, 1), (2, 1, 1, 0), (1, 2, 0, 1), (0, 1, 1, 2)))


def _source(frame: Any, format: Optional[FormatLike], size: Optional[Sequence[int]]) -> Source:
    if isinstance(frame, Frame):
        return check_source(frame.data, format or frame.format, size or (frame.width, frame.height))
    if format is None:
        raise TypeError("a frame that is not a prismoutl.Frame needs its format, for example 'BayerRG12'")
    return check_source(frame, format, size)


def _reduce(source: Source, out: Array) -> None:
    if source.format.depth == 8:
        rows = source.array.reshape(source.height, -1)
        out[...] = rows[:, : source.width]
        return
    check(
        library.MonoNToMono8(
            address(out), source.address, _MONO_OF_DEPTH[source.format.depth], source.width, source.height, 0
        ),
        f"reducing {source} to 8 bits",
    )


def _bayer8(source: Source) -> Source:
    reduced = np.empty((source.height, source.width), np.uint8)
    _reduce(source, reduced)
    return check_source(reduced, 0x01080008 + source.format.phase)


def convert(
    frame: Any,
    format: Optional[FormatLike] = None,
    to: str = "BGR",
    demosaic: Optional[str] = None,
    out: Optional[Array] = None,
    *,
    size: Optional[Sequence[int]] = None,
    threads: Threads = None,
) -> Array:
    """Converts a frame to an 8-bit picture and returns it.

    frame: an array of the format's shape and type (see `frame_shape`), a `Frame`, or, with size=(width, height), any
        buffer of exactly the frame's bytes.
    format: a name, for example "BayerRG12", or a PFNC code.
    to: "BGR" (height, width, 3), "BGRA" (height, width, 4; alpha is 255), "BGRPad" (height, bytes: rows of a multiple
        of 4 bytes) or, for monochrome and Bayer frames, "grey" (height, width).
    demosaic: of Bayer frames "bilinear", "adaptive" or "none" (grey); by default as `settings` say. An adaptive
        conversion of more than 8 bits works on the frame reduced to 8 bits, in memory of its own.
    out: the array to write to; by default a new one.
    threads: "auto" (the pool where that is safe), "caller", "pool" or a `Pool`; by default as `settings` say.
    """
    source = _source(frame, format, size)
    if to not in _OUTPUTS:
        raise ValueError(f"to is one of {', '.join(_OUTPUTS)}, not {to!r}")
    if demosaic is None:
        demosaic = default_demosaic()
    if demosaic not in _METHODS:
        raise ValueError(f"demosaic is one of {', '.join(_METHODS)}, not {demosaic!r}")
    kind, width, height = source.format.kind, source.width, source.height
    if to == "grey":
        if kind not in ("mono", "bayer"):
            raise ValueError(
                f"{source.format.name} frames have no conversion to grey; mono and Bayer frames have"
            )
        out = output(out, (height, width), np.uint8, [source.array])
        _reduce(source, out)
        return out
    if source.format.name == "BGRA10":
        raise ValueError("BGRA10 frames have no conversion; shift the samples to 8 bits and convert BGRA8")

    shapes = {
        "BGRA": (height, width, 4),
        "BGR": (height, width, 3),
        "BGRPad": (height, (3 * width + 3) // 4 * 4),
    }
    out = output(out, shapes[to], np.uint8, [source.array])
    operation = f"converting {source} to {to}"
    if source.format.name == "BGRA8":
        if to == "BGRA":
            check(library.BGRA8ToBGRA_SP(address(out), source.address, width, height), operation)
        else:
            check(
                library.BGRA8ToBGR_SP(address(out), source.address, width, height, to == "BGRPad"), operation
            )
        return out
    pool = uses_pool(threads, height)
    if kind == "bayer" and demosaic == "adaptive" and source.format.depth > 8:
        source = _bayer8(source)
    status = library.ConvImageEx(
        _OUTPUTS[to],
        source.format.code,
        address(out),
        source.address,
        width,
        height,
        _METHODS[demosaic],
        pool,
    )
    check_pooled(status, operation, source.array, out)
    return out


def convert_planes(
    frame: Any,
    format: Optional[FormatLike] = None,
    out: Optional[Sequence[Array]] = None,
    *,
    size: Optional[Sequence[int]] = None,
    threads: Threads = None,
) -> Tuple[Array, Array, Array]:
    """Splits an RGB8 or BGR8 frame, or demosaics an 8-bit Bayer frame bilinearly, into its blue, green and red plane.

    out: three arrays (height, width) to write to. The rest is as for `convert`.
    """
    source = _source(frame, format, size)
    if source.format.name not in ("RGB8", "BGR8") and (source.format.kind, source.format.depth) != (
        "bayer",
        8,
    ):
        raise ValueError(
            f"{source.format.name} frames have no planes; RGB8, BGR8 and 8-bit Bayer frames have"
        )
    shape = source.height, source.width
    given: Sequence[Optional[Array]] = (None, None, None) if out is None else out
    if len(given) != 3:
        raise ValueError(f"out is three arrays, not {len(given)}")
    blue = output(given[0], shape, np.uint8, [source.array], "out[0]")
    green = output(given[1], shape, np.uint8, [source.array, blue], "out[1]")
    red = output(given[2], shape, np.uint8, [source.array, blue, green], "out[2]")
    pool = uses_pool(threads, source.height)
    status = library.ConvImagePlanarEx(
        source.format.code,
        address(blue),
        address(green),
        address(red),
        source.address,
        source.width,
        source.height,
        pool,
        0,
    )
    check_pooled(status, f"splitting {source} into planes", source.array, blue, green, red)
    return blue, green, red


def mirrored_format(format: FormatLike, *, horizontal: bool = False, vertical: bool = False) -> Format:
    """The format of a mirrored frame: a Bayer frame changes its phase."""
    format = find_format(format)
    if format.kind != "bayer":
        return format
    return BY_CODE[format.code ^ (1 if horizontal else 0) ^ (3 if vertical else 0)]


def mirror(
    frame: Any,
    format: Optional[FormatLike] = None,
    out: Optional[Array] = None,
    *,
    horizontal: bool = False,
    vertical: bool = False,
    size: Optional[Sequence[int]] = None,
) -> Array:
    """Mirrors a frame left-right, top-bottom or both in its own format; `mirrored_format` says which it is then."""
    source = _source(frame, format, size)
    if source.format.has_padded_rows or source.format.name in ("BGRA8", "BGRA10"):
        raise ValueError(f"{source.format.name} frames have no mirror; turn the array with numpy.flip")
    shape = frame_shape(source.format, source.width, source.height)
    out = output(out, shape, "<u2" if source.format.sample_bytes == 2 else np.uint8, [source.array])
    check(
        library.RvrsImg_SP(
            address(out),
            source.address,
            source.format.code,
            source.width,
            source.height,
            horizontal,
            vertical,
        ),
        f"mirroring {source}",
    )
    return out


def mosaic(picture: Array, format: FormatLike, out: Optional[Array] = None) -> Array:
    """Makes the frame of a BGR or BGRA picture (height, width, 3 or 4) that a camera of the format would have seen."""
    target = find_format(format)
    layout = layout_of(picture)
    if layout.channels == 1:
        raise ValueError("frames are made of BGR or BGRA pictures, (height, width, 3 or 4), not of grey ones")
    if target.has_padded_rows or target.name in ("BGRA8", "BGRA10"):
        raise ValueError(f"{target.name} frames cannot be made; mono, Bayer, RGB, BGR and YUV frames can")
    check_size(target, layout.width, layout.height)
    shape = frame_shape(target, layout.width, layout.height)
    out = output(out, shape, "<u2" if target.sample_bytes == 2 else np.uint8, [picture])
    operation = f"making a {target.name} frame of {layout.width}x{layout.height}"
    if target.kind == "bayer":
        make = getattr(library, f"ToBayer8to{target.depth}")
        status = make(
            address(out),
            address(picture),
            _SITES[target.phase],
            layout.width,
            layout.height,
            layout.channels,
            0,
        )
    else:
        source_code = 0x02180015 if layout.channels == 3 else 0x02200017
        status = library.ToRaw(
            address(out), address(picture), target.code, source_code, layout.width, layout.height, 0
        )
    check(status, operation)
    return out
