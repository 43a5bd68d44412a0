"""Pixel formats, and the arrays that hold their frames."""

from __future__ import annotations

import difflib
from typing import Dict, NamedTuple, Tuple, Union


YUV411 = "YUV411_8_UYYVYY"
YUV422 = "YUV422_8_UYVY"


class Format(NamedTuple):
    """A pixel format: its PFNC code, the kind of its pixels and the significant bits of a sample."""

    name: str
    code: int
    kind: str  # "mono", "bayer", "colour" or "yuv"
    depth: int

    @property
    def bits_per_pixel(self) -> int:
        return self.code >> 16 & 0xFF

    @property
    def sample_bytes(self) -> int:
        return 2 if self.depth > 8 else 1

    @property
    def has_padded_rows(self) -> bool:
        return self.code & 0xFF == 0xFF

    @property
    def width_unit(self) -> int:
        """Widths have to be a multiple of this."""
        return {YUV411: 4, YUV422: 2}.get(self.name, 2 if self.kind == "bayer" else 1)

    @property
    def height_unit(self) -> int:
        """Heights have to be a multiple of this."""
        return 2 if self.kind == "bayer" else 1

    def row_bytes(self, width: int) -> int:
        packed = self.bits_per_pixel * width // 8
        return (packed + 3) // 4 * 4 if self.has_padded_rows else packed

    @property
    def phase(self) -> int:
        """Of a Bayer format: 0 GR, 1 RG, 2 GB, 3 BG."""
        return self.code & 3


_TABLE = [
    Format("Mono8", 0x01080001, "mono", 8),
    Format("Mono10", 0x01100003, "mono", 10),
    Format("Mono12", 0x01100005, "mono", 12),
    Format("Mono16", 0x01100007, "mono", 16),
    Format("BayerGR8", 0x01080008, "bayer", 8),
    Format("BayerRG8", 0x01080009, "bayer", 8),
    Format("BayerGB8", 0x0108000A, "bayer", 8),
    Format("BayerBG8", 0x0108000B, "bayer", 8),
    Format("BayerGR10", 0x0110000C, "bayer", 10),
    Format("BayerRG10", 0x0110000D, "bayer", 10),
    Format("BayerGB10", 0x0110000E, "bayer", 10),
    Format("BayerBG10", 0x0110000F, "bayer", 10),
    Format("BayerGR12", 0x01100010, "bayer", 12),
    Format("BayerRG12", 0x01100011, "bayer", 12),
    Format("BayerGB12", 0x01100012, "bayer", 12),
    Format("BayerBG12", 0x01100013, "bayer", 12),
    Format("RGB8", 0x02180014, "colour", 8),
    Format("BGR8", 0x02180015, "colour", 8),
    Format("RGB10", 0x02300018, "colour", 10),
    Format("BGR10", 0x02300019, "colour", 10),
    Format("RGB12", 0x0230001A, "colour", 12),
    Format("BGR12", 0x0230001B, "colour", 12),
    Format(YUV411, 0x020C001E, "yuv", 8),
    Format(YUV422, 0x0210001F, "yuv", 8),
    Format("YUV8_UYV", 0x02180020, "yuv", 8),
    Format("BGRA8", 0x02200017, "colour", 8),
    Format("BGRA10", 0x0240004C, "colour", 10),
    Format("BGR8PadVexo", 0x021800FF, "colour", 8),
    Format("Mono8Pad", 0x010800FF, "mono", 8),
]

#: The pixel formats by name.
FORMATS: Dict[str, Format] = {format.name: format for format in _TABLE}
BY_CODE: Dict[int, Format] = {format.code: format for format in _TABLE}

FormatLike = Union[str, int, Format]


def find_format(format: FormatLike) -> Format:
    """A format by its name or PFNC code."""
    if isinstance(format, Format):
        return format
    if isinstance(format, str):
        if format in FORMATS:
            return FORMATS[format]
        close = difflib.get_close_matches(format, FORMATS, 3)
        hint = f"did you mean {' or '.join(close)}?" if close else "prismoutl.FORMATS lists the names"
        raise ValueError(f"there is no pixel format {format!r}; {hint}")
    if isinstance(format, int):
        if format in BY_CODE:
            return BY_CODE[format]
        raise ValueError(
            f"there is no pixel format with code {format:#010x}; prismoutl.FORMATS lists the codes"
        )
    raise TypeError(f"a pixel format is a name or a code, not {type(format).__name__}")


def frame_shape(format: FormatLike, width: int, height: int) -> Tuple[int, ...]:
    """The shape of the array of a frame: (height, width), with a third axis for channels, or (height, bytes of a row)
    for YUV 4:1:1 and padded formats. Samples of more than 8 bits are uint16, others uint8."""
    format = find_format(format)
    if format.has_padded_rows or format.name == YUV411:
        return height, format.row_bytes(width)
    channels = format.bits_per_pixel // (8 * format.sample_bytes)
    return (height, width) if channels == 1 else (height, width, channels)
