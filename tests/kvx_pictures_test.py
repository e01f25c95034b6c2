"""Pictures keep what their files say beside the pixels."""
import io
import struct
import zlib

from PIL import Image, ImageCms, PngImagePlugin

from kvx_support import KvxTest, main

ORIENTATION, DESCRIPTION = 0x0112, 0x010E


class Pictures(KvxTest):
    def picture(self):
        image = Image.new("RGB", (24, 16), (200, 40, 40))
        image.paste((40, 200, 40), (0, 0, 12, 8))
        image.paste((40, 40, 200), (12, 8, 24, 16))
        return image

    def exif(self, orientation):
        exif = Image.Exif()
        exif[ORIENTATION] = orientation
        exif[DESCRIPTION] = "a walk"
        return exif.tobytes()

    def open(self, name):
        return Image.open(io.BytesIO(self.read(name)))

    def test_every_orientation_is_applied(self):
        methods = Image.Transpose
        stored_for = {2: [methods.FLIP_LEFT_RIGHT], 3: [methods.ROTATE_180], 4: [methods.FLIP_TOP_BOTTOM],
                      5: [methods.TRANSPOSE], 6: [methods.ROTATE_90], 7: [methods.TRANSVERSE], 8: [methods.ROTATE_270]}
        upright = self.picture()
        for orientation, turns in stored_for.items():
            stored = upright
            for turn in turns:
                stored = stored.transpose(turn)
            stored.save(self.folder / "in.jpg", quality=95, exif=self.exif(orientation), subsampling=0)
            self.kvx("render", "Invert", "--opacity", 0, "in.jpg", "out.png", "--overwrite")
            got = self.open("out.png").convert("RGB")
            self.assertEqual(got.size, upright.size)
            for place in ((3, 3), (20, 3), (20, 12), (3, 12)):
                difference = max(abs(a - b) for a, b in zip(got.getpixel(place), upright.getpixel(place)))
                self.assertLess(difference, 12, (orientation, place))
            self.assertEqual(self.open("out.png").getexif()[ORIENTATION], 1)

    def test_metadata_goes_from_each_format_to_each(self):
        profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        self.picture().save(self.folder / "in.jpg", exif=self.exif(6), icc_profile=profile, dpi=(300, 300),
                            comment="spoken")
        text = PngImagePlugin.PngInfo()
        text.add_text("Author", "nobody")
        text.add_itxt("Title", "Straße", zip=True)
        self.picture().save(self.folder / "in.png", exif=self.exif(6), icc_profile=profile, dpi=(300, 300),
                            pnginfo=text)
        for source in ("in.jpg", "in.png"):
            for target in ("o.jpg", "o.png"):
                result = self.invert(source, target, "--overwrite")
                got = self.open(target)
                got.load()
                self.assertEqual(result.notes, "", (source, target))
                self.assertEqual(got.getexif()[DESCRIPTION], "a walk")
                self.assertEqual(got.info["icc_profile"], profile)
                self.assertAlmostEqual(got.info["dpi"][0], 300, delta=0.1)
                if source == "in.png":
                    told = str(got.info) if target == "o.png" else self.read(target).decode(errors="replace")
                    self.assertIn("nobody", told)
                    self.assertIn("Straße", told)

    def test_what_is_reduced_is_named_and_large_claims_are_refused(self):
        Image.new("I;16", (8, 8), 40000).save(self.folder / "deep.png")
        self.assertIn("16 bits per channel become 8", self.invert("deep.png", "o.png").notes)
        Image.new("CMYK", (8, 8)).save(self.folder / "print.jpg")
        self.assertIn("CMYK", self.invert("print.jpg", "p.png", status=1).notes)
        Image.new("L", (8, 8)).save(self.folder / "grey.png", icc_profile=b"\0" * 16 + b"GRAY" + b"\0" * 200)
        self.assertIn("ICC profile", self.invert("grey.png", "g.png").notes)

        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

        for side in (16000, 30000):
            head = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
            body = chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(b"\0" * 99))
            self.write("huge.png", b"\x89PNG\r\n\x1a\n" + body)
            self.invert("huge.png", "h.png", status=1)


if __name__ == "__main__":
    main()
