"""Ways to take out noise: by patches compared pair by pair, and by adaptive manifolds. Patches have 5 voxels a side."""
import cv2
import numpy as np
from skimage.restoration import denoise_nl_means

from filters import Peer

NOISE = 20
SIDE = 5


def by_skimage(image, h, distance):
    return denoise_nl_means(image.astype(np.float32), patch_size=SIDE, patch_distance=distance, h=h, sigma=NOISE,
                            fast_mode=True)


def by_opencv(image, h, search):
    return cv2.fastNlMeansDenoising(image, None, h, SIDE, search)


def by_manifolds(image, spatial, range):
    """The manifolds of four principal components of the patches."""
    image = image.astype(np.float32) / 255
    offsets = np.arange(SIDE) - SIDE // 2
    weights = np.exp(-(offsets[:, None] ** 2 + offsets**2) / (SIDE // 2))
    rows, columns = (np.random.default_rng(1).integers(2, n - 2, 400) for n in image.shape)
    sample = np.stack([(image[y - 2:y + 3, x - 2:x + 3] * weights).ravel() for y, x in zip(rows, columns)])
    directions = np.linalg.svd(sample - sample.mean(0), full_matrices=False)[2][:4]
    joint = cv2.merge([cv2.filter2D(image, -1, (d.reshape(SIDE, SIDE) * weights).astype(np.float32))
                       for d in directions])
    return 255 * cv2.ximgproc.amFilter(joint, image, spatial, range)


def methods(image):
    """Name, function and best settings (see non_local_means_settings.py) of those that take such an image."""
    flat = image.ndim == 2
    yield "skimage fast", by_skimage, dict(h=16, distance=6) if flat else dict(h=12, distance=3)
    if flat and image.dtype == np.uint8:
        yield "cv2 fastNlMeans", by_opencv, dict(h=22, search=21)
    if flat:
        yield "cv2 amFilter", by_manifolds, dict(spatial=4, range=0.2)


def peers(image):
    for name, denoise, settings in methods(image):
        yield Peer(name, lambda denoise=denoise, settings=settings: denoise(image, **settings).clip(0, 255).astype(image.dtype))
