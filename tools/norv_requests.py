"""Runs of every mode of norv but 8, which measures time: what two builds of it must answer with the same bytes."""
import dataclasses
import os
import re
import struct
import subprocess

from norv_files import bits, floats, net, pairs, picture, plane, restoration

NAN, INFINITY = 0x7fc00000, 0x7f800000


@dataclasses.dataclass
class Request:
    words: list  # behind the program's name
    files: dict  # that are there before the run
    keys: bytes = b""
    inHere: bool = False  # whether the current folder is the one of the files


def odd_picture(width, height, code):
    """A picture with infinite, huge, tiny and undefined values among ordinary ones."""
    content = bytearray(picture(width, height, code))
    odd = [INFINITY, INFINITY | 1 << 31, NAN, NAN | 1 << 31, 0x7f7fffff, 1, 1 << 31, 0x4f000000, 0xcf000001, 0x447a0000]
    for place, value in enumerate(odd):
        struct.pack_into("<I", content, 16 + 4 * (37 * place + 5), value)
    return bytes(content)


def requests():
    image, small, plain, odd = picture(37, 21), picture(5, 4, 0x2007, 4), picture(33, 24), odd_picture(40, 23, 23)
    luminance = picture(30, 20, 0x20000)
    made = []

    def add(words, keys=b"", inHere=False, **files):
        names = {name.replace("_", "."): content for name, content in files.items()}
        made.append(Request([str(word) for word in words], names, keys, inHere))

    # Restoration: every type, the weight rules and kernels, colours, emphasis, odd values.
    for type_ in range(8):
        add([0] + restoration(type_=type_, iterations=2, steps=3), input_fdib=image)
        add([1] + restoration(type_=type_, representation=2, threads=3, kernel=-33), input_fdib=odd)
    for kernel in (0, 1, 2, 3, 15, -1, -2, -20, -35):
        add([0] + restoration(factor=3, kernel=kernel, type_=1), input_fdib=plain)
    for representation in range(7):
        add([0] + restoration(representation=representation, type_=2, shape_cross=0.3), input_fdib=image)
    add([2] + restoration(type_=6), input_fdib=odd)
    add([3] + restoration(type_=5, threads=2), inHere=True, input_fdib=image, input_bit=bits(37, 21))
    add([4] + restoration(type_=4, threads=3), input_bit=bits(50, 40))
    add([5] + restoration(type_=7, factor=3), input_bit=bits(17, 11))
    for code in (1 << k for k in range(5, 27) if k not in (8, 19)):
        colours = picture(12, 10, code, 4 if code in (0x20, 0x40, 0x80, 0x2000) else 3)
        add([0] + restoration(iterations=1, steps=1, type_=1), input_fdib=colours)

    for variant, kept, hard in ((0, 0, 0), (0, 5, 1), (1, 0, 0)):
        add([6, 9, 4, kept, hard, 1, 2, variant, "result.fdib", 1], input_fdib=image)
    add([6, 0, 6, 0, 0, 0, 1, 0, "result.fdib", 0], input_fdib=odd)
    add([7, 2, 4, 9, 0, 0.1, 1, 1, 1, 1, "result.fdib", 1], input_fdib=image)
    add([7, 1, 5, 0, 2.83, 0.2, 0, 0, 0, 0, "result.fdib", 1], input_fdib=luminance)
    add([7, 1, 3, 20, 0, 0.1, 0, 0, 0, 1, "result.fdib", 1], input_fdib=odd)

    # Training: every activation kind; huge rates, which end in infinite and undefined weights; momentum, clipping.
    for kind in range(1, 18):
        add([9, 3, 0.1, 0.01, 0, kind % 3, 0, 0.5 * (kind % 2), 1, 0], test_net=net(8, [21, 9, 4], kind),
            test_dat=pairs(60, 8, 4))
        add([9, 2, 30, 30, 2 * (kind % 2), 0, 0, 0.9, 4, 1], test_net=net(8, [9, 4], kind), test_dat=pairs(40, 8, 4))
        add([10, kind % 2, 1, 1 - kind % 2], net_net=net(24, [19, 8, 4], kind), input_fdib=image)
        add([10, 1, 2, 0], net_net=net(8, [7, 4], kind), input_fdib=odd)
    for inputs, outputs in ((8, 16), (24, 16), (48, 4), (48, 16), (49, 16), (72, 16)):
        add([10, 1, 4, 1], net_net=net(inputs, [12, outputs], 14), input_fdib=small)
    for order in (0, 1, 2):
        for inputs in (8, 24, 48, 49, 72):
            add([11, order % 2, 2 + order, inputs, 4, -3 + order], standard_mat=plane(30, 26),
                test_dat=pairs(5, inputs, 4))
    add([11, 1, 2, 8, 16, 3], standard_mat=plane(90, 86), test_dat=pairs(5, 8, 16))
    add([12], test_dat=pairs(50, 8, 4))
    add([13], b"keys", test_net=net(24, [16, 8, 4], 1))
    add([13], test_net=net(24, [4], 1)[:-40] + floats(10, -1e30, 1e30, 3))
    return made


def answer(program, request, folder, environment, emulator=()):
    """What one run leaves: exit code, standard error and output without the time, the files."""
    folder.mkdir(parents=True)
    for file, content in request.files.items():
        (folder / file).write_bytes(content)
    done = subprocess.run([*emulator, program, *request.words], cwd=folder if request.inHere else "/", input=request.keys,
                          env={**os.environ, "NORV_DIR": str(folder), **environment}, capture_output=True, timeout=600)
    output = re.sub(rb"\n[\d.]+ secs, [\d.]+ mins\., [\d.]+ hrs\., [\d.]+ days", b"\n(time)", done.stdout)
    left = {file.name: file.read_bytes() for file in folder.iterdir()}
    return {"exit code": done.returncode, "standard error": done.stderr.replace(str(folder).encode(), b"FOLDER"),
            "standard output": output} | left
