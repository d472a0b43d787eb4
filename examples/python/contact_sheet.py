"""Writes a sheet of small pictures, one each so many seconds: contact_sheet.py RECORDING SECONDS OUT.ppm"""

import sys

import numpy as np
import velmar_video as vv

COLUMNS = 8


def main(path: str, seconds: str, output: str) -> None:
    with vv.open(path) as recording:
        times = recording.capture_times
        step = np.timedelta64(round(float(seconds) * 1e6), "us")
        wanted = np.arange(times[0], times[-1] + step, step)
        chosen = np.searchsorted(times, wanted[wanted <= times[-1]])
        small = recording.frames(chosen, scale="1/8")
    rows = -(-len(small) // COLUMNS)
    sheet = np.zeros((rows * COLUMNS, *small.shape[1:]), np.uint8)
    sheet[: len(small)] = small
    height, width, channels = small.shape[1:]
    picture = sheet.reshape(rows, COLUMNS, height, width, channels).swapaxes(1, 2)
    with open(output, "wb") as file:
        file.write(b"P6\n%d %d\n255\n" % (COLUMNS * width, rows * height))
        file.write(picture.tobytes())


if __name__ == "__main__":
    main(*sys.argv[1:])
