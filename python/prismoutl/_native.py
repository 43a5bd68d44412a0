"""The shared library and the prototypes of the functions that the package calls."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_char_p, c_int32, c_uint8, c_uint32, c_void_p
from pathlib import Path

_BESIDE = Path(__file__).with_name("libPrismoUtl.so.1")


def _load() -> ctypes.CDLL:
    """Where PRISMOUTL_LIBRARY says, beside this file (in a wheel), or where the system looks."""
    name = os.environ.get("PRISMOUTL_LIBRARY") or (str(_BESIDE) if _BESIDE.exists() else "libPrismoUtl.so.1")
    try:
        return ctypes.CDLL(name)
    except OSError as error:
        raise ImportError(
            f"cannot load {name} ({error}); install the Debian packages libprismoutl1 and libturbojpeg0, "
            "or set PRISMOUTL_LIBRARY to the path of libPrismoUtl.so.1"
        ) from None


library = _load()

_U8, _U32, _I32, _PTR = c_uint8, c_uint32, c_int32, c_void_p
_TO_BAYER = [_PTR, _PTR, POINTER(_I32), _I32, _U32, _I32, _U8]
_PROTOTYPES = {
    "ConvImageEx": [_U32, _U32, _PTR, _PTR, _U32, _U32, _U32, _U8],
    "ConvImagePlanarEx": [_U32, _PTR, _PTR, _PTR, _PTR, _U32, _U32, _U8, _U8],
    "BGRA8ToBGRA_SP": [_PTR, _PTR, _U32, _U32],
    "BGRA8ToBGR_SP": [_PTR, _PTR, _I32, _I32, _U8],
    "MonoNToMono8": [_PTR, _PTR, _U32, _I32, _I32, _U8],
    "RvrsImg_SP": [_PTR, _PTR, _U32, _U32, _U32, _U8, _U8],
    "ToBayer8to8": _TO_BAYER,
    "ToBayer8to10": _TO_BAYER,
    "ToBayer8to12": _TO_BAYER,
    "ToRaw": [_PTR, _PTR, _U32, _U32, _U32, _U32, _U8],
    "SaveBmpARGBStrm": [_PTR, _U32, _U32, _U32, c_char_p],
    "SaveBmpRGBStrm": [_PTR, _U32, _U32, _U32, c_char_p],
    "SaveBmpMonoStrm": [_PTR, _U32, _U32, _U32, c_char_p],
    "SaveJpeg": [_PTR, _U32, _U32, _U32, c_char_p],
    "SaveJpegQ": [_PTR, _U32, _U32, _U32, _U32, c_char_p],
    "SaveRWH": [_PTR, _U32, _U32, _U32, c_char_p],
    "LoadRWH": [c_char_p, POINTER(_PTR), POINTER(_U32), POINTER(_U32), POINTER(_U32), POINTER(_U32)],
    "PrepareLUT": [],
    "StartMPThreads": [_I32],
    "TerminateMPThreads": [],
    "SetMPTimeout_msec": [_U32],
    "SetMPThreadPriority": [_I32],
    "SetProcMode": [_I32],
    "SetBayerConvMode": [_I32],
}
for _name, _arguments in _PROTOTYPES.items():
    getattr(library, _name).argtypes = _arguments
    getattr(library, _name).restype = _U32
for _name in ("GetMPCount", "GetProcMode", "GetBayerConvMode"):
    getattr(library, _name).argtypes = []
    getattr(library, _name).restype = _I32

# Conversions on the pool trust that these are there.
library.PrepareLUT()
