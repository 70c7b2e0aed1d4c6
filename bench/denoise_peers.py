#!/usr/bin/python3
"""The denoisers against non-local means with its best strength, on photographs with Gaussian noise.

bench/denoise_peers.py NORV PICTURE... [--noise 10 20 30 50] [--side 192]
needs Debian's python3-opencv. Photographs: packages lomiri-wallpapers-16.04 and python3-skimage (skimage/data).
Every picture is made grey, reduced four times when it is larger than 1500 pixels (clean pictures) and cut to its middle.
Gain: decibels over the noisy picture. Time: processor seconds a megapixel and plane.
"""
import argparse
import os
import resource
import statistics
import struct
import subprocess
import tempfile

import cv2
import numpy as np


def clean_picture(path, side):
    grey = cv2.imread(path, cv2.IMREAD_GRAYSCALE)
    if max(grey.shape) > 1500:
        grey = cv2.resize(grey, (grey.shape[1] // 4, grey.shape[0] // 4), interpolation=cv2.INTER_AREA)
    top, left = max(0, (grey.shape[0] - side) // 2), max(0, (grey.shape[1] - side) // 2)
    return grey[top : top + side, left : left + side].astype(np.float32)


def ratio(found, clean):
    return 10 * np.log10(255.0**2 / np.mean((np.clip(found, 0, 255) - clean) ** 2))


def save(path, planes):
    height, width = planes[0].shape
    with open(path, "wb") as file:
        file.write(struct.pack("<4i", width, height, 23, 0))
        for plane in planes:
            file.write(plane.astype("<f4").tobytes())


def load(path):
    data = open(path, "rb").read()
    width, height = struct.unpack("<2i", data[:8])
    return np.frombuffer(data, "<f4", offset=16).reshape(3, height, width)


def by_norv(norv, arguments):
    def denoise(noisy, sigma):
        with tempfile.TemporaryDirectory() as folder:
            save(folder + "/input.fdib", noisy)
            words = [a.format(sigma=sigma) for a in arguments.split()]
            subprocess.run([norv, *words], env=dict(os.environ, NORV_DIR=folder), check=True, stdout=subprocess.DEVNULL)
            return load(folder + "/out.fdib")

    return denoise


def by_means(noisy, sigma, clean):
    """Of all strengths the one that comes nearest to the clean picture."""
    planes = [np.clip(np.round(p), 0, 255).astype(np.uint8) for p in noisy]
    strengths = [sigma * f for f in np.arange(0.5, 1.5, 0.1)]
    results = [[cv2.fastNlMeansDenoising(p, None, h, 7, 21) for p in planes] for h in strengths]
    return max(results, key=lambda r: ratio(np.array(r, np.float32), clean))


def processor_seconds():
    own, children = resource.getrusage(resource.RUSAGE_SELF), resource.getrusage(resource.RUSAGE_CHILDREN)
    return own.ru_utime + children.ru_utime


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("norv")
    parser.add_argument("pictures", nargs="+")
    parser.add_argument("--noise", nargs="+", type=float, default=[20])
    parser.add_argument("--side", type=int, default=192)
    options = parser.parse_args()
    roads = {
        "6 hard": by_norv(options.norv, "6 {sigma} 8 0 1 0 1 0 out.fdib 0"),
        "6 wiener": by_norv(options.norv, "6 {sigma} 8 0 0 0 1 0 out.fdib 0"),
        "6 estimated": by_norv(options.norv, "6 0 8 0 0 0 1 0 out.fdib 0"),
        "7 fast": by_norv(options.norv, "7 8 6 {sigma} 0 0.1 0 0 0 1 out.fdib 0"),
        "7 full": by_norv(options.norv, "7 8 8 {sigma} 0 0.1 0 0 0 0 out.fdib 0"),
    }
    for sigma in options.noise:
        gains, seconds = {}, {}
        for path in options.pictures:
            clean = clean_picture(path, options.side)
            generator = np.random.default_rng(7)
            noisy = [clean + generator.normal(0, sigma, clean.shape).astype(np.float32) for _ in range(3)]
            before = 20 * np.log10(255 / sigma)
            line = f"noise {sigma:g} {os.path.basename(path)[:24]:24}"
            for name, road in {**roads, "means": lambda n, s: by_means(n, s, clean)}.items():
                start = processor_seconds()
                gain = ratio(np.array(road(noisy, sigma), np.float32), clean) - before
                seconds.setdefault(name, []).append((processor_seconds() - start) / (3 * clean.size) * 1e6)
                gains.setdefault(name, []).append(gain)
                line += f"  {name} {gain:.2f}"
            print(line, flush=True)
        print(f"noise {sigma:g} mean gain: " + "  ".join(f"{n} {statistics.mean(g):.2f}" for n, g in gains.items()))
        print("  median seconds: " + "  ".join(f"{n} {statistics.median(s):.1f}" for n, s in seconds.items()), flush=True)


if __name__ == "__main__":
    main()
