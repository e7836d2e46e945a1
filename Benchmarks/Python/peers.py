#!/usr/bin/env python3
"""Runs what Python users have for the work of our cases: OpenCV, SciPy and scikit-image, on two threads where they have
a use for them. The program bench starts it and talks to it over its standard input and output, in lines of JSON:

{"work": "box", "parameters": {"x": 3, "y": 3}, "images": [{"type": "uint8", "shape": [512, 512]}]}
    and the images' voxels. Answer: [{"name": "cv2.blur", "comparable": true}], the peers for this work.
{"run": 0}
    Answer: the seconds that the first of them took.
{"result": 0}
    Answer: the voxels that its last run gave.
"""
import json
import os
import sys
import time

import numpy as np

import filters
import non_local_means
import template_matching

WORKS = {
    "box": filters.box,
    "median": filters.median,
    "morphology": filters.morphology,
    "gaussian": filters.gaussian,
    "correlation": filters.correlation,
    "matching": template_matching.matching,
    "nlm": non_local_means.peers,
}


def receive_image(requests, type, shape):
    image = np.empty(shape, type)
    voxels = memoryview(image).cast("B")
    received = 0
    while received < len(voxels):
        count = requests.readinto(voxels[received:])
        if not count:
            sys.exit("peers.py: an image ended early")
        received += count
    return image


class Session:
    """The peers of the latest work, and what their runs gave."""

    def __init__(self, requests, answers):
        self.requests, self.answers = requests, answers
        self.peers, self.results = [], {}

    def begin(self, work, parameters, images):
        self.peers, self.results = [], {}
        arrays = [receive_image(self.requests, **image) for image in images]
        self.peers = list(WORKS[work](*arrays, **parameters))
        self.answer([{"name": peer.name, "comparable": peer.comparable} for peer in self.peers])

    def run(self, index):
        start = time.perf_counter()
        result = self.peers[index].run()
        seconds = time.perf_counter() - start
        self.results[index] = result
        self.answer(seconds)

    def send_result(self, index):
        self.answers.write(memoryview(np.ascontiguousarray(self.results[index])).cast("B"))
        self.answers.flush()

    def answer(self, value):
        self.answers.write(json.dumps(value).encode() + b"\n")
        self.answers.flush()

    def serve(self):
        for line in self.requests:
            request = json.loads(line)
            if "run" in request:
                self.run(request["run"])
            elif "result" in request:
                self.send_result(request["result"])
            else:
                self.begin(**request)


if __name__ == "__main__":
    answers = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)  # so that nothing that a package prints gets between the answers
    Session(sys.stdin.buffer, answers).serve()
