"""Conversions of the Python package against those of the prismo tool, which is C++."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import numpy as np
import prismoutl

TOOL = os.environ["PRISMO_TOOL"]
CHANNELS = {"BGR": 3, "BGRA": 4, "grey": 1}


def random_frame(format, width, height, seed=20240611):
    random = np.random.default_rng(seed)
    shape = prismoutl.frame_shape(format, width, height)
    if format.sample_bytes == 1:
        return random.integers(0, 256, shape, np.uint8)
    return random.integers(0, 1 << format.depth, shape, np.uint16)


class Conversions(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def by_tool(self, frame, format, width, height, kind, *options):
        raw, out = self.folder / "frame.rwh", self.folder / f"picture.{kind.lower()}"
        prismoutl.save_raw(raw, frame, format, size=(width, height))
        subprocess.run([TOOL, "convert", raw, "-o", out, *options], check=True, stdout=subprocess.DEVNULL)
        shape = (height, width) if kind == "grey" else (height, width, CHANNELS[kind])
        return np.fromfile(out, np.uint8).reshape(shape)

    def test_every_format_as_the_tool(self):
        for width, height in (36, 50), (8, 6):
            for format in prismoutl.FORMATS.values():
                if format.name == "BGRA10":
                    continue
                frame = random_frame(format, width, height)
                size = (width, height) if format.has_padded_rows else None
                demosaics = ("bilinear", "adaptive", "none") if format.kind == "bayer" else ("bilinear",)
                for to in "BGR", "BGRA":
                    for demosaic in demosaics:
                        options = ["--demosaic", demosaic] if format.kind == "bayer" else []
                        expected = self.by_tool(frame, format, width, height, to, *options)
                        with self.subTest(format.name, to=to, demosaic=demosaic):
                            picture = prismoutl.convert(frame, format.name, to, demosaic, size=size)
                            np.testing.assert_array_equal(picture, expected)
                            if to == "BGR":
                                padded = prismoutl.convert(frame, format.code, "BGRPad", demosaic, size=size)
                                self.assertEqual(padded.shape, (height, (3 * width + 3) // 4 * 4))
                                packed = padded[:, : 3 * width].reshape(height, width, 3)
                                np.testing.assert_array_equal(packed, expected)

    def test_grey(self):
        for name in "Mono8", "Mono10", "Mono12", "Mono16", "BayerRG10", "Mono8Pad":
            format = prismoutl.FORMATS[name]
            frame = random_frame(format, 10, 4)
            size = (10, 4)
            options = ["--demosaic", "none"] if format.kind == "bayer" else []
            expected = self.by_tool(frame, format, *size, "grey", *options)
            np.testing.assert_array_equal(prismoutl.convert(frame, name, "grey", size=size), expected)

    def test_on_the_pool_as_on_the_caller(self):
        frame = random_frame(prismoutl.FORMATS["BayerGB12"], 64, 48)
        with prismoutl.Pool(threads=2, timeout=None) as pool:
            pooled = prismoutl.convert(frame, "BayerGB12", threads=pool)
        np.testing.assert_array_equal(pooled, prismoutl.convert(frame, "BayerGB12", threads="caller"))

    def test_small_and_odd_frames_need_no_pool(self):
        with prismoutl.Pool(threads=16, timeout=None):
            for height in 1, 3, 8, 38, 41:
                prismoutl.convert(np.zeros((height, 8), np.uint8), "Mono8")

    def test_writes_to_the_given_array(self):
        frame = random_frame(prismoutl.FORMATS["BayerRG8"], 16, 16)
        out = np.empty((16, 16, 3), np.uint8)
        self.assertIs(prismoutl.convert(frame, "BayerRG8", out=out), out)
        np.testing.assert_array_equal(out, prismoutl.convert(frame, "BayerRG8"))

    def test_takes_any_buffer_with_its_size(self):
        frame = random_frame(prismoutl.FORMATS["BayerRG12"], 16, 8)
        expected = prismoutl.convert(frame, "BayerRG12")
        for data in (
            frame.tobytes(),
            bytearray(frame.tobytes()),
            memoryview(frame.tobytes()),
            frame.view(np.uint8),
        ):
            np.testing.assert_array_equal(prismoutl.convert(data, "BayerRG12", size=(16, 8)), expected)

    def test_planes(self):
        for name in "BayerGR8", "RGB8", "BGR8":
            frame = random_frame(prismoutl.FORMATS[name], 16, 44)
            picture = prismoutl.convert(frame, name)
            planes = prismoutl.convert_planes(frame, name)
            if name != "BayerGR8":  # whose planes have borders of their own
                np.testing.assert_array_equal(np.dstack(planes), picture)
            out = [np.empty((44, 16), np.uint8) for _ in range(3)]
            prismoutl.convert_planes(frame, name, out)
            np.testing.assert_array_equal(out, planes)
            np.testing.assert_array_equal(np.dstack(planes)[2:-2, 2:-2], picture[2:-2, 2:-2])

    def test_mirrors(self):
        for name in "Mono8", "BayerRG12", "RGB8", "BGR10":
            frame = random_frame(prismoutl.FORMATS[name], 8, 6)
            np.testing.assert_array_equal(prismoutl.mirror(frame, name, horizontal=True), frame[:, ::-1])
            np.testing.assert_array_equal(prismoutl.mirror(frame, name, vertical=True), frame[::-1])
        self.assertEqual(prismoutl.mirrored_format("BayerGB12", horizontal=True).name, "BayerBG12")
        self.assertEqual(prismoutl.mirrored_format("BayerGB12", vertical=True).name, "BayerRG12")
        self.assertEqual(prismoutl.mirrored_format("Mono8", vertical=True).name, "Mono8")

    def test_mosaics(self):
        colour = np.array([200, 100, 48], np.uint8)
        picture = np.ascontiguousarray(np.broadcast_to(colour, (8, 8, 3)))
        for name, format in prismoutl.FORMATS.items():
            if format.kind == "bayer":
                frame = prismoutl.mosaic(picture, name)
                self.assertTrue((prismoutl.convert(frame, format) == colour).all(), name)
        bgra = np.dstack([picture, np.full((8, 8), 7, np.uint8)])
        for name in "RGB12", "YUV422_8_UYVY", "YUV411_8_UYYVYY", "Mono10":
            np.testing.assert_array_equal(prismoutl.mosaic(bgra, name), prismoutl.mosaic(picture, name))
        np.testing.assert_array_equal(prismoutl.mosaic(picture, "RGB8"), picture[:, :, ::-1])


if __name__ == "__main__":
    unittest.main()
