#!/usr/bin/python3
"""The restoration's plain update against scipy's sparse conjugate gradients on the same operators, one thread.

bench/restore_peers.py [BENCHMARK]     default build/bench/norv_bench; needs Debian's python3-scipy
A picture of 500 x 500 is enlarged twice with the cubic kernel; weights are all 0.035. Times are processor nanoseconds a
result pixel and inner step, medians of three runs in turn with the benchmark's.
"""
import json
import statistics
import subprocess
import sys
import time

import numpy as np
import scipy.sparse as sparse
from scipy.sparse.linalg import LinearOperator, cg

SMALL, FACTOR, STEPS, LAMBDA = 500, 2, 17, 0.035


def cubic(x, p=-0.5):
    t = abs(x)
    if t < 1:
        return (p + 2) * t**3 - (p + 3) * t**2 + 1
    return p * (t**3 - 5 * t**2 + 8 * t - 4) if t < 2 else 0.0


def reduction(small, factor):
    """One axis: small x large, taps mirrored without repeating the edge."""
    length = 4 * factor - factor % 2
    taps = np.array([cubic((i - (length - 1) / 2) / factor) for i in range(length)])
    taps /= taps.sum()
    large, matrix = small * factor, sparse.lil_matrix((small, small * factor), dtype=np.float32)
    for i in range(small):
        for j, tap in enumerate(taps):
            k = abs(factor * i - (length - factor) // 2 + j)
            matrix[i, min(k, 2 * large - 2 - k)] += tap
    return matrix.tocsr()


def operators():
    axis, large = reduction(SMALL, FACTOR), SMALL * FACTOR
    keep = sparse.eye(large - 1, large, dtype=np.float32)
    shift = sparse.eye(large - 1, large, k=1, dtype=np.float32)
    diagonal = sparse.kron(shift, shift) - sparse.kron(keep, keep)
    other = sparse.kron(keep, shift) - sparse.kron(shift, keep)
    return sparse.vstack([sparse.kron(axis, axis), LAMBDA * diagonal, LAMBDA * other]).tocsr().astype(np.float32)


def by_hand(A, adjoint, observed, x):
    """Least-squares conjugate gradients, products with A and its adjoint once a step."""
    residual = observed - A @ x
    g = adjoint @ residual
    p, rho = g.copy(), float(g @ g)
    for _ in range(STEPS):
        q = A @ p
        alpha = np.float32(rho / float(q @ q))
        x = x + alpha * p
        residual -= alpha * q
        g = adjoint @ residual
        previous, rho = rho, float(g @ g)
        p = np.float32(rho / previous) * p + g
    return x


def by_scipy(A, adjoint, observed, x):
    product = LinearOperator((A.shape[1],) * 2, matvec=lambda v: adjoint @ (A @ v), dtype=np.float32)
    return cg(product, adjoint @ observed, x0=x, maxiter=STEPS, tol=0)[0]


def ours(program):
    command = [program, "--benchmark_filter=^Update/factor2$", "--benchmark_format=json"]
    rows = json.loads(subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout)
    return rows["benchmarks"][0]["ns_per_pixel_step"]


def main():
    program = sys.argv[1] if len(sys.argv) > 1 else "build/bench/norv_bench"
    A = operators()
    adjoint = A.T.tocsr()
    pixels = A.shape[1]
    observed = np.zeros(A.shape[0], np.float32)
    observed[: SMALL * SMALL] = np.random.default_rng(1).random(SMALL * SMALL, np.float32) * 255
    start = np.full(pixels, 128, np.float32)
    times = {"norv": [], "scipy, by hand": [], "scipy.sparse.linalg.cg": []}
    for _ in range(3):
        times["norv"].append(ours(program))
        for name, solve in (("scipy, by hand", by_hand), ("scipy.sparse.linalg.cg", by_scipy)):
            began = time.process_time()
            solve(A, adjoint, observed, start)
            times[name].append((time.process_time() - began) / pixels / STEPS * 1e9)
    best = statistics.median(times["norv"])
    for name, values in times.items():
        print(f"{name:24s} {statistics.median(values):7.2f} ns   {statistics.median(values) / best:6.1f} times")


main()
