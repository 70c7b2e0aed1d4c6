"""Makes the files that the tool reads, with the same numbers at every call."""
import random
import struct


def floats(count, low, high, seed):
    source = random.Random(seed)
    return struct.pack(f"<{count}f", *(source.uniform(low, high) for _ in range(count)))


def net(inputs, sizes, kind):
    """A random network's file: a header of 21 fields, then kind, inputs, b, vb, z, a, delta, X, W, V of every unit."""
    content = struct.pack("<18i", len(sizes), inputs, *sizes, *[0] * (16 - len(sizes))) + bytes(12)
    for layer, size in enumerate(sizes):
        for unit in range(size):
            content += struct.pack("<2i", kind, inputs) + floats(1, -0.2, 0.2, unit) + bytes(16 + 4 * inputs)
            content += floats(inputs, -0.3, 0.3, (layer * 1000 + unit) * 1000) + bytes(4 * inputs)
        inputs = size
    return content


def picture(width, height, code=23, planes=3):
    return struct.pack("<4i", width, height, code, 0) + floats(planes * width * height, 0, 255, 1)


def plane(width, height):
    return struct.pack("<3i", width, height, width * height) + floats(width * height, 0, 255, 2)


def bits(width, height):
    stride = (3 * width + 3) // 4 * 4
    return struct.pack("<2i", width, height) + random.Random(4).randbytes(stride * height)


def pairs(count, inputs, outputs):
    return struct.pack("<3i", count, inputs, outputs) + floats(count * (inputs + outputs), -0.5, 0.5, 3)


def restoration(**changed):
    """The 21 parameters of the modes below 6 for a quick restoration; the keys stand in their order."""
    words = dict(factor=2, kernel=-1, lambda_cross=0.06, lambda_=0.035, delta_cross=1, delta=1, gate_cross=0, gate=0,
                 spare_cross=0, spare=0, shape_cross=0.8, shape_dot=0.8, steps=2, iterations=1, orientation_scale=0.7,
                 emphasis=0.5, representation=1, type_=5, keep_mask=0, unread=0, threads=2)
    return [str(word) for word in (words | changed).values()]
