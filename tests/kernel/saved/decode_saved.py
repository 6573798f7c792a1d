#!/usr/bin/env python3
"""decode_saved.py FILE...: prints files of saved values as text, by docs/saved-values.md alone.

Used by the tests as a decoder that shares no code with the library. Standard library only.
"""
import struct
import sys
import zlib

PAYLOAD_TAG = 0x5041594C
PIXELS_MARK = b"\x8bRPX\r\n\x1a\x01"
# bytes of a channel and channels of a pixel by format
CHANNELS = {0: (1, 4), 1: (2, 4), 2: (1, 2), 3: (2, 2), 4: (1, 5), 5: (2, 4), 6: (1, 1), 7: (2, 1),
            9: (4, 4), 10: (4, 1)}


def restored(line, above, step):
    """A row from its filter and bytes."""
    row = bytearray(step + len(line) - 1)
    for i, byte in enumerate(line[1:], step):
        a, b, c = row[i - step], above[i], above[i - step]
        nearest = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
        row[i] = byte + (0, a, b, (a + b) // 2, nearest)[line[0]] & 255
    return row


def pixels(data):
    """Compressed pixels as text, a row of hexadecimal bytes after the other."""
    form, width, height, rows = struct.unpack("<4I", data[8:24])
    size, step = CHANNELS[form]
    count = -(-height // rows)
    sizes = struct.unpack("<%dI" % count, data[24:24 + 4 * count])
    at, text = 24 + 4 * count, "pixels of format %d, %d x %d:" % (form, width, height)
    for band, length in enumerate(sizes):
        plain = zlib.decompress(data[at:at + length])
        at += length
        stride = 1 + width * step * size
        above = bytes(step + stride - 1)
        for y in range(min(rows, height - band * rows)):
            above = restored(plain[y * stride:(y + 1) * stride], above, step)
            planes = above[step:]
            row = bytes(planes[k * width * step + i] for i in range(width * step) for k in range(size))
            text += "\n" + row.hex()
    assert at == len(data)
    return text


class Decoder:
    def __init__(self, data):
        self.data = data
        self.at = 0
        self.ended = []  # by object: whether it has been read to its end

    def take(self, size):
        assert self.at + size <= len(self.data), "cut off at %d" % self.at
        self.at += size
        return self.data[self.at - size:self.at]

    def head(self):
        first = self.take(1)[0]
        major, info = first >> 5, first & 31
        assert info < 28, "indefinite or reserved length at %d" % (self.at - 1)
        if info < 24:
            return major, info, info
        argument = int.from_bytes(self.take(1 << info - 24), "big")
        return major, info, argument

    def value(self):
        major, info, argument = self.head()
        if major == 0:
            return str(argument)
        if major == 1:
            return str(-1 - argument)
        if major == 2:
            data = self.take(argument)
            return pixels(data) if data.startswith(PIXELS_MARK) else "bytes " + (data.hex() or "none")
        if major == 3:
            return '"%s"' % self.take(argument).decode("utf-8")
        if major == 4:
            return self.array(argument)
        if major == 5:
            return self.items(argument)
        if major == 6:
            return self.tagged(argument)
        if info == 27:
            return "double %016x %r" % (argument, struct.unpack(">d", struct.pack(">Q", argument))[0])
        return {20: "false", 21: "true", 22: "null"}[argument]

    def tagged(self, tag):
        if tag == 28:
            index = len(self.ended)
            self.ended.append(False)
            major, _, count = self.head()
            assert (major, count) == (4, 3)
            text = "#%d %s" % (index, self.array(3))
            self.ended[index] = True
            return text
        if tag == 29:
            index = int(self.value())
            assert self.ended[index]
            return "-> #%d" % index
        if tag == 86:
            major, _, size = self.head()
            assert major == 2 and size % 8 == 0
            numbers = struct.unpack("<%dd" % (size // 8), self.take(size))
            return "doubles [%s]" % ", ".join(map(repr, numbers))
        assert tag == PAYLOAD_TAG, "tag %d" % tag
        return "payload %d" % int(self.value())

    def array(self, count):
        return "[%s]" % ", ".join(self.value() for _ in range(count))

    def items(self, count):
        lines = {}
        for _ in range(count):
            key = self.value()
            assert len(key) == 6 and key not in lines
            lines[key] = self.value()
        return "{" + "".join("\n" + key.strip('"') + ": " + lines[key] for key in lines) + "\n}"


def decode(data):
    assert data[:8] == b"\x8bRSV\r\n\x1a\x01"
    decoder = Decoder(data)
    decoder.take(8)
    major, info, length = decoder.head()
    assert (major, info) == (0, 27)
    text = decoder.value()
    assert decoder.at == 17 + length
    text += "\npayloads " + decoder.value()
    assert decoder.at == len(data)
    return text


for path in sys.argv[1:]:
    with open(path, "rb") as file:
        print(decode(file.read()))
