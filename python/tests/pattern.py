"""The virtual camera's test pattern, computed here from its definition (docs/virtual-camera.md):
frame n, pixel (x, y), modulo 256: L = x + 2y + 3n; Gray8 = L; Gray16 = L * 257; NV12: Y = L,
chroma block (i, j) = (x/2, y/2): U = 64 + i + j + n, V = 192 + i + 2j + n. Illumination is on
for even frame numbers."""
import numpy as np

INVERSE_OF_3 = 171  # 3 * 171 = 513 = 1 (mod 256)


def luma(width, height, n):
    y, x = np.mgrid[0:height, 0:width]
    return ((x + 2 * y + 3 * n) % 256).astype(np.uint8)


def chroma(width, height, n):
    j, i = np.mgrid[0 : (height + 1) // 2, 0 : (width + 1) // 2]
    return np.stack([(64 + i + j + n) % 256, (192 + i + 2 * j + n) % 256], axis=-1).astype(np.uint8)


def frame_number(first_luma):
    """n modulo 256 from the value of pixel (0, 0), which is 3n (mod 256)."""
    return (int(first_luma) * INVERSE_OF_3) % 256
