"""What OpenCV, SciPy and scikit-image do for the filters. Each function yields the peers for the images and the
parameters of a case."""
from typing import Callable, NamedTuple

import cv2
import numpy as np
import scipy.fft
import scipy.ndimage
import scipy.signal
import skimage.feature
import skimage.filters.rank
import skimage.morphology

THREADS = 2
cv2.setNumThreads(THREADS)


class Peer(NamedTuple):
    name: str
    run: Callable[[], np.ndarray]
    comparable: bool = True  # with our result, voxel by voxel


def box(image, x, y):
    result = np.empty_like(image)
    yield Peer("cv2.blur", lambda: cv2.blur(image, (x, y), result, borderType=cv2.BORDER_REPLICATE))
    # Truncates whole numbers after each axis.
    yield Peer("SciPy", lambda: scipy.ndimage.uniform_filter(image, (y, x), result, mode="nearest"),
               image.dtype == np.float32)


def median(image, radius):
    side = 2 * radius + 1
    result = np.empty_like(image)
    if radius <= 2 or image.dtype == np.uint8:
        yield Peer("cv2.medianBlur", lambda: cv2.medianBlur(image, side, result), False)  # repeats the edge
    if radius <= 7:  # beyond it takes minutes
        yield Peer("SciPy", lambda: scipy.ndimage.median_filter(image, side, output=result, mode="mirror"))
    if image.dtype == np.uint8:
        square = np.ones((side, side), np.uint8)
        # Leaves out what lies beyond the edge.
        yield Peer("scikit-image", lambda: skimage.filters.rank.median(image, square, out=result), False)


def morphology(image, operation, radius, square):
    result = np.empty_like(image)

    def of_opencv(name, mask, passes):
        what = {"erosion": cv2.MORPH_ERODE, "opening": cv2.MORPH_OPEN}[operation]
        return Peer(name, lambda: cv2.morphologyEx(image, what, mask, result, iterations=passes,
                                                   borderType=cv2.BORDER_REPLICATE))

    if square:
        side = 2 * radius + 1
        yield of_opencv("cv2 square", np.ones((side, side), np.uint8), 1)
        filter = {"erosion": scipy.ndimage.grey_erosion, "opening": scipy.ndimage.grey_opening}[operation]
        yield Peer("SciPy", lambda: filter(image, size=(side, side), output=result, mode="nearest"))
    else:
        yield of_opencv("cv2 diamond", skimage.morphology.diamond(radius), 1)
        yield of_opencv(f"cv2 cross x{radius}", skimage.morphology.diamond(1), radius)
        crosses = skimage.morphology.diamond(radius, decomposition="sequence")
        filter = {"erosion": skimage.morphology.erosion, "opening": skimage.morphology.opening}[operation]
        yield Peer("scikit-image", lambda: filter(image, crosses, out=result))


def gaussian(volume, sigma, kernelSize):
    """Of OpenCV's: each slice along x and y, then all as the rows of one matrix along z."""
    result = np.empty_like(volume)
    exact, sums = (np.empty(volume.shape, np.float32) for _ in range(2))
    coefficients = cv2.getGaussianKernel(kernelSize, sigma, cv2.CV_32F)

    def filter(source, width, target):
        if target.dtype == np.uint16:  # has a function that is faster, and gives no other type
            cv2.GaussianBlur(source, (width, kernelSize), sigma, target, sigma, cv2.BORDER_REFLECT)
        else:
            along_x = coefficients if width > 1 else np.ones(1, np.float32)
            cv2.sepFilter2D(source, cv2.CV_32F, along_x, coefficients, target, borderType=cv2.BORDER_REFLECT)

    def filter_through(between, target):
        for from_slice, to_slice in zip(volume, between):
            filter(from_slice, kernelSize, to_slice)
        filter(between.reshape(len(volume), -1), 1, target.reshape(len(volume), -1))
        return target

    own = np.empty_like(volume)
    yield Peer("cv2 own type", lambda: filter_through(own, result))
    if volume.dtype != np.float32:
        yield Peer("cv2 float", lambda: np.copyto(result, filter_through(exact, sums), "unsafe") or result)
    # Truncates whole numbers after each axis.
    yield Peer("SciPy", lambda: scipy.ndimage.gaussian_filter(volume, sigma, output=result, mode="reflect"),
               volume.dtype == np.float32)


def correlation(image, template, removesMean):
    """SciPy's has our size; the others give the places where the template lies wholly in the image."""
    if removesMean:
        yield Peer("cv2 TM_CCOEFF", lambda: cv2.matchTemplate(image, template, cv2.TM_CCOEFF), False)
        yield Peer("scikit-image", lambda: skimage.feature.match_template(image, template), False)  # normalised
        return

    def by_scipy():
        with scipy.fft.set_workers(THREADS):
            return scipy.signal.fftconvolve(image, template[::-1, ::-1], mode="same")

    yield Peer("cv2 TM_CCORR", lambda: cv2.matchTemplate(image, template, cv2.TM_CCORR), False)
    yield Peer("SciPy", by_scipy, False)
