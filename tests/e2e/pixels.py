"""The pixels of an observation's picture, decoded by other code than the helper's."""

import base64

import gi

gi.require_version("GdkPixbuf", "2.0")
from gi.repository import GdkPixbuf  # noqa: E402


class Picture:
    """The "image" of an observation. Pixels are addressed by points of the screen."""

    def __init__(self, image):
        loader = GdkPixbuf.PixbufLoader.new_with_type("png")
        loader.write(base64.b64decode(image["base64"], validate=True))
        loader.close()
        pixels = loader.get_pixbuf()
        self.width = pixels.get_width()
        self.height = pixels.get_height()
        self.bounds = image["bounds"]
        self._channels = pixels.get_n_channels()
        self._stride = pixels.get_rowstride()
        self._bytes = pixels.get_pixels()

    def pixel(self, column, row):
        start = row * self._stride + column * self._channels
        return self._bytes[start:start + 3]

    def columns(self, box):
        left = int(box["x"] - self.bounds["x"])
        return range(max(left, 0), min(left + int(box["width"]), self.width))

    def rows(self, box):
        top = int(box["y"] - self.bounds["y"])
        return range(max(top, 0), min(top + int(box["height"]), self.height))

    def colours(self, box=None):
        """The number of different colours, in a rectangle of the screen or in all."""
        box = box or self.bounds
        return len({self.pixel(x, y) for y in self.rows(box) for x in self.columns(box)})

    def changes(self, other):
        """The points of the screen where two pictures of the same size differ."""
        assert (self.width, self.height) == (other.width, other.height)
        return [(self.bounds["x"] + x, self.bounds["y"] + y)
                for y in range(self.height) for x in range(self.width)
                if self.pixel(x, y) != other.pixel(x, y)]


def contains(box, point, slack=0):
    return (box["x"] - slack <= point[0] <= box["x"] + box["width"] + slack
            and box["y"] - slack <= point[1] <= box["y"] + box["height"] + slack)


def is_inside(inner, outer, slack=0):
    return (contains(outer, (inner["x"], inner["y"]), slack)
            and contains(outer, (inner["x"] + inner["width"], inner["y"] + inner["height"]), slack))


def centre(box):
    return box["x"] + box["width"] / 2, box["y"] + box["height"] / 2
