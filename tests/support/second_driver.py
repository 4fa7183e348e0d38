#!/usr/bin/env python3
"""second_driver.py PROBE PROGRAM: runs a GL test program on Mesa's driver over Vulkan, without a graphics card.

A second driver compiles and links the shaders in its own way. PROBE is the program with the test of the driver; where
that says that the driver cannot be started (mesa-vulkan-drivers is not there, for instance), the reason is printed and
the exit status is 77, which ctest counts as skipped.

This driver has been seen to crash once in many runs on a busy machine. A program that ends by a signal is run once more,
and says so; a test that fails is not.
"""
import os
import subprocess
import sys

SKIPPED = 77


def main(probe, program):
    environment = dict(os.environ, GALLIUM_DRIVER="zink", LIBGL_ALWAYS_SOFTWARE="1", V3D_RENDERER="zink")
    try:
        started = subprocess.run([probe, "--gtest_filter=DriverTest.*"], env=environment, stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, text=True, check=False, timeout=60)
        status, said = started.returncode, started.stdout
    except subprocess.TimeoutExpired:
        status, said = SKIPPED, "it did not answer within 60 seconds"
    if status != 0 or "[  PASSED  ] 1 test" not in said:
        print("NOT RUN on the second driver (zink over Vulkan): it could not be started. What it said:")
        print(said)
        return SKIPPED
    print(next(line for line in said.splitlines() if line.startswith("renderer: ")), flush=True)
    status = subprocess.run([program, "--gtest_shuffle"], env=environment, check=False).returncode
    if status < 0:
        print(f"ENDED BY SIGNAL {-status} on the second driver; once more:", flush=True)
        status = subprocess.run([program, "--gtest_shuffle"], env=environment, check=False).returncode
    return 1 if status < 0 else status


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
