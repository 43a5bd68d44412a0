"""Converts a raw frame file to a BMP picture: convert.py FRAME.rwh PICTURE.bmp"""

import sys

import prismoutl

if len(sys.argv) != 3:
    sys.exit("usage: convert.py FRAME.rwh PICTURE.bmp")
try:
    prismoutl.save_bmp(sys.argv[2], prismoutl.convert(prismoutl.load_raw(sys.argv[1])))
except (prismoutl.Error, ValueError) as error:
    sys.exit(str(error))
