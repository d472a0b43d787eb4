"""Copies the frames of some seconds to a new recording: copy_scene.py RECORDING FROM TO OUT.img"""

import sys

import numpy as np
import velmar_video as vv


def main(path: str, begin: str, end: str, output: str) -> None:
    with vv.open(path) as recording:
        first = recording.capture_times[0]
        start, stop = (first + np.timedelta64(round(float(at) * 1e6), "us") for at in (begin, end))
        scene = recording.between(start, stop)
        arrivals = scene.arrival_times
        with vv.create(
            output,
            device_id=recording.device_id,
            undistorted=recording.undistorted,
            camera_params=recording.camera_params,
        ) as writer:
            for i, captured in enumerate(scene.capture_times):
                writer.add(scene.jpeg_view(i), captured, arrivals[i])
        print(f"{len(scene)} frames")


if __name__ == "__main__":
    main(*sys.argv[1:])
