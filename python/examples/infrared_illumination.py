# %% [markdown]
# # Infrared frames and their illumination flag
#
# A face-authentication camera lights its infrared illuminator for some frames and not for
# others; every frame says which (`frame.illumination`). A lit frame minus the dark frame next
# to it keeps what the illuminator lit (a face at arm's length) and drops the ambient infrared
# (sunlight, lamps). Run it as a script or cell by cell (`# %%` cells, as in Jupyter or VS Code):
#
#     python3 python/examples/infrared_illumination.py [OUTPUT_FOLDER]
#
# On the virtual camera the frames carry a test pattern and every other frame is lit.

# %%
import importlib.util
import sys
from pathlib import Path

import numpy as np

import vexcap

cameras = vexcap.cameras()
for camera in cameras:
    print(f"{camera.name}: {', '.join(camera.sources)} ({camera.id})")

# %% [markdown]
# Eight infrared frames. Frames view the library's memory until they are released; `copy()`
# keeps them for longer without holding the library's records.

# %%
with vexcap.open(cameras[0], reader="infrared") as cam:
    frames = [frame.copy() for frame in cam.frames(count=8)]

for frame in frames:
    state = "lit " if frame.illumination else "dark"
    print(f"{frame.timestamp / 1e6:10.4f} s  {state}  mean grey {frame.image.mean():6.1f}")

# %% [markdown]
# The first lit frame, the dark frame after it, and their difference.

# %%
lit_index = next(i for i, frame in enumerate(frames) if frame.illumination)
dark = next(frame for frame in frames[lit_index + 1 :] if not frame.illumination)
lit = frames[lit_index]
difference = np.clip(lit.image.astype(np.int16) - dark.image.astype(np.int16), 0, 255).astype(np.uint8)
panels = {
    "lit (illuminator on)": lit.image,
    "dark (illuminator off)": dark.image,
    "lit minus dark": difference,
}

# %%
def show(panels):
    import matplotlib.pyplot as plt

    figure, axes = plt.subplots(1, len(panels), figsize=(4 * len(panels), 3.5))
    for axis, (title, image) in zip(axes, panels.items()):
        axis.imshow(image, cmap="gray", vmin=0, vmax=255)
        axis.set_title(title)
        axis.axis("off")
    plt.show()


def save(panels, folder):
    from vexcap.png import write_png

    folder.mkdir(parents=True, exist_ok=True)
    for title, image in panels.items():
        path = folder / (title.split(" (")[0].replace(" ", "-") + ".png")
        write_png(path, image)
        print(f"{title}: {path}")


# Shown when matplotlib is at hand and no folder was named; written as PNG files otherwise.
if len(sys.argv) == 1 and importlib.util.find_spec("matplotlib") is not None:
    show(panels)
else:
    save(panels, Path(sys.argv[1] if len(sys.argv) > 1 else "illumination-example"))
