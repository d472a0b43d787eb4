"""Work on many recordings by many processes, on one machine or on the machines of a cluster.

    from velmar_video import fleet

    ranges = fleet.scan("drives", where="speed_m_s > 20")
    for path, index, brightness in fleet.map_frames(np.mean, ranges, scale="1/8"):
        ...

A cluster is one of dask's: its client is given as `client`. docs/fleet.md is the tour.
"""

try:
    import dask.dataframe
    import distributed
    import pandas  # type: ignore[import]
except ImportError as error:
    raise ImportError(
        "velmar_video.fleet needs dask: apt install python3-dask python3-distributed python3-pandas"
    ) from error

from ._catalog import CatalogChanges, catalog
from ._frames import map_frames
from ._scan import scan

__all__ = ["CatalogChanges", "catalog", "map_frames", "scan"]
