"""vexel.stream: files in pieces give what their data give at once, also when the work is interrupted."""

import json
import os
import subprocess
import sys

import numpy as np
import pytest

import vexel as vx
from vexel import stream

X = np.round(vx.Random(1).normal(5003) * 50) / 7
X[40] = np.nan
W = vx.Random(2).integers(0, 4, len(X)).astype(float)


@pytest.fixture(params=["csv", "npy", "parquet", "two"])
def files(request, tmp_path):
    path = tmp_path / f"data.{request.param}"
    if request.param == "npy":
        np.save(path, np.stack([X, W], axis=1))
        return path, 0, 1
    pd = pytest.importorskip("pandas")
    frame = pd.DataFrame({"x": X, "w": W, "name": "a"})
    if request.param == "parquet":
        pytest.importorskip("pyarrow")
        frame.to_parquet(path)
        return path, "x", "w"
    parts = [tmp_path / "a.csv", tmp_path / "b.csv"] if request.param == "two" else [path]
    for part, rows in zip(parts, np.array_split(np.arange(len(frame)), len(parts))):
        frame.iloc[rows].to_csv(part, index=False)
    return parts, "x", "w"


def same(a, b):
    return all(np.asarray(p, dtype=float).tobytes() == np.asarray(q, dtype=float).tobytes()
               for p, q in zip(*((r if isinstance(r, tuple) else (r,)) for r in (a, b))))


@pytest.mark.parametrize("rows", [5003, 700, 64])
def test_pieces_give_what_the_whole_gives(files, rows):
    path, column, weights = files
    where = {"column": column, "rows": rows}
    omit = {"nan_policy": "omit"}
    q = [0, 0.1, 0.5, 0.93]
    assert same(stream.quantile(path, q, **where, **omit), vx.quantile(X, q, **omit))
    assert same(stream.quantile(path, q, weights=weights, method="weibull", **where, **omit),
                vx.quantile(X, q, weights=W, method="weibull", **omit))
    assert same(stream.tally(path, **where), vx.tally(X)) and stream.tally(path, **where).missing == 1
    assert same(stream.histogram(path, 12, **where), vx.histogram(X, 12))
    found, one = stream.describe(path, **where), vx.describe(X)
    assert same(found[:9], one[:9])
    np.testing.assert_allclose(found, one, rtol=1e-12)


def test_interrupted_work_goes_on(tmp_path, monkeypatch):
    monkeypatch.setattr(stream, "_every", -1.0)
    path, state = tmp_path / "x.npy", tmp_path / "state"
    np.save(path, X)

    class Stopped(Exception):
        pass

    def stop(share):
        if share > limit:
            raise Stopped

    for limit in (0.1, 0.3, 0.8):
        with pytest.raises(Stopped):
            stream.describe(path, rows=500, state=state, progress=stop)
        with pytest.raises(ValueError, match="other work"):
            stream.quantile(path, 0.5, rows=500, state=state)
    kept = state.read_bytes()
    assert same(stream.describe(path, rows=500, state=state), stream.describe(path)) and not state.exists()
    for bad in (kept[:-1], b"", kept.replace(b"stream 2", b"stream 1"), kept.replace(b"pass 4", b"pass 3")):
        state.write_bytes(bad)
        with pytest.raises(ValueError, match="damaged, or of another version"):
            stream.describe(path, rows=500, state=state)


COMMAND = os.environ.get("VEXEL_COMMAND", "")


def command(*words, status=0):
    done = subprocess.run([COMMAND, *map(str, words)], capture_output=True, text=True)
    assert done.returncode == status, done.stderr
    return json.loads(done.stdout) if "--json" in words and status == 0 else done.stdout + done.stderr


@pytest.mark.skipif(not COMMAND, reason="no command beside the package")
@pytest.mark.parametrize("kind", ["csv", "npy", "swapped", "columns"])
def test_the_command_gives_the_same_and_goes_on_with_the_work(tmp_path, monkeypatch, kind):
    table, path = np.stack([X, W], axis=1), tmp_path / ("x.csv" if kind == "csv" else "x.npy")
    if kind == "csv":
        pytest.importorskip("pandas").DataFrame({"name": "a", "x": X, "w": W}).to_csv(path, index=False, na_rep="NULL")
        column, weights, given = "x", "w", ["-c", "x", "-w", "3"]
    else:
        np.save(path, {"npy": table, "swapped": table.astype(">f4"), "columns": np.asfortranarray(table)}[kind])
        column, weights, given = 0, 1, ["-c", 1, "-w", 2]
    options = {"column": column, "weights": weights, "nan_policy": "omit", "rows": 700}
    state, q = tmp_path / "state", [0, 0.1, 0.93]
    jobs = [(("quantile", "-q", "0,0.1", "-q", "0.93", "--method", "hazen"),
             lambda **more: stream.quantile(path, q, method="hazen", **options, **more), "quantiles"),
            (("describe",), lambda **more: stream.describe(path, **options, **more), None),
            (("tally",), lambda **more: stream.tally(path, **options, **more), "values")]
    for words, job, part in jobs:
        words = (*words, path, *given, "--rows", 700)
        found, one = command(*words, "--json"), job()
        numbers = list(found.values()) if part is None else found[part]
        assert same(np.array(numbers), np.array(one if part != "values" else one.values))
        # Begun here and ended there, and the other way round.
        monkeypatch.setattr(stream, "_every", -1.0)
        for limit in (0.2, 0.9):
            stopped = []
            with pytest.raises(KeyboardInterrupt):
                job(state=state, progress=lambda share: stopped.append(share) or _interrupt(share > limit))
        assert command(*words, "--json", "--state", state) == found and not state.exists()
        for _ in range(4):
            assert "goes on from there" in command(*words, "--state", state, "--stop-after", 0, status=1)
        kept = state.read_bytes()
        assert "other work" in command(*words[:-1], 701, "--state", state, status=1)
        shares = []
        assert same(np.array(job(state=state, progress=shares.append)[:2]), np.array(one[:2])) and not state.exists()
        assert part == "values" or min(shares) > 0.1  # not from the start
        for bad in (kept[:-1], b"", kept.replace(b"stream 2", b"stream 3")):
            state.write_bytes(bad)
            assert "damaged, or of another version" in command(*words, "--state", state, status=1)
        state.unlink()


def _interrupt(now):
    if now:
        raise KeyboardInterrupt


DATA = "row 1 has numbers alone and is read as data: "


@pytest.mark.filterwarnings("error")
@pytest.mark.parametrize("text, options, words, values, told", [
    ("1,2\n3,4\n", {"column": 0}, ["-c", 1], [1, 3], DATA + r"1 \| 2 \(headings=True reads"),
    ("1,2\n3,4\n", {"column": 0, "headings": False}, ["-c", 1, "--no-headings"], [1, 3], ""),
    ("1,2\n3,4\n", {"column": 1, "headings": True}, ["-c", 2, "--headings"], [4], ""),
    ("-,2\n3,4\n", {"column": "1", "na": ["-"]}, ["-c", 2, "--na", "-"], [2, 4], DATA),
    ("Bern,1.5\nRom,2\n", {"column": 1}, ["-c", 2], [2], r"row 1 is read as headings, though some .* Bern \| 1.5"),
    ("Bern,1.5\nRom,2\n", {"column": "1.5"}, ["-c", "1.5"], [2], ""),
    ("\ufeffa; b\n1,5;x\n2;y\n", {"column": "a", "decimal": ","}, ["-c", "a", "--decimal", ","], [1.5, 2], ""),
    ("1,5;2\n2,5;3\n", {"column": 0, "decimal": ","}, ["-c", 1, "--decimal", ","], [1.5, 2.5], DATA + r"1,5 \| 2 "),
    ("a\tb\n1\t2\n", {"column": "b", "separator": "\t"}, ["-c", "b", "--separator", "tab"], [2], ""),
])
def test_no_row_is_lost_for_headings_and_marks_are_as_asked(tmp_path, text, options, words, values, told):
    pytest.importorskip("pandas")
    path, state = tmp_path / "x.csv", tmp_path / "state"
    path.write_text(text)
    if told:
        with pytest.warns(UserWarning, match=told) as all_told:
            assert stream.tally(path, **options).values.tolist() == values
        assert len(all_told) == 1
    else:
        assert stream.tally(path, **options).values.tolist() == values
    if COMMAND:  # takes the same rows, and begins the same work
        words = ["tally", path, *words, "--quiet", "--rows", 1 << 20]
        assert command(*words, "--json")["values"] == values
        assert "goes on from there" in command(*words, "--state", state, "--stop-after", 0, status=1)
        assert stream.tally(path, state=state, nan_policy="omit", **options).values.tolist() == values


def test_text_that_is_not_as_asked(tmp_path):
    pytest.importorskip("pandas")
    path = tmp_path / "x.csv"
    for text, options, told in [("a\0b", {}, "x.csv is no text"), ("1,2\n", {"column": "y"}, "has no 'y', it has columns 0 to 1; " + DATA),
                                ("x,x\n1,2\n", {"column": "x"}, "several 'x'"),
                                ("a;b\n1;2\n", {}, "separator: row 1 of .*x.csv has semicolons in its cells; ';' sep"),
                                ("x\n1\nfour\n", {}, "x.csv: .*four"), ("", {}, "x.csv is empty"),
                                ("x,y\n1,5\n1,5,2,5\n", {"column": "y"}, "row 3 has 4 cells, row 1 has 2"),
                                ("x\n1\n", {"separator": "::"}, "separator must be a character"),
                                ("x\n1\n", {"separator": ",", "decimal": ","}, "separator must be another character")]:
        path.write_text(text)
        with pytest.raises(ValueError, match=told):
            stream.describe(path, **options)
    with pytest.raises(TypeError, match="headings must be True, False or None"):
        stream.describe(path, headings="x")


@pytest.mark.filterwarnings("error")
def test_numbers_of_text_are_read_to_the_last_digit(tmp_path):
    pytest.importorskip("pandas")
    x = vx.Random(3).bits(20_000).view(np.float64)
    x = x[np.isfinite(x)]
    (tmp_path / "x.csv").write_text("x\n" + "\n".join(map(repr, x.tolist())) + "\n")
    assert np.concatenate([part for part, *_ in stream.pieces(tmp_path / "x.csv", rows=999)]).tobytes() == x.tobytes()


def test_a_state_that_cannot_be_written_is_told_before_reading(tmp_path):
    np.save(tmp_path / "x.npy", np.arange(9.0))
    for state in (tmp_path, tmp_path / "none" / "state", tmp_path / "x.npy" / "state"):
        with pytest.raises(OSError, match="state: "):
            stream.describe(tmp_path / "x.npy", state=state, progress=lambda share: pytest.fail("it was read"))
    stream.describe(tmp_path / "x.npy", state=tmp_path / "state")
    assert [p.name for p in tmp_path.iterdir()] == ["x.npy"]


def test_errors_say_what_is_wrong(tmp_path):
    np.save(tmp_path / "t.npy", np.ones((4, 3)))
    with pytest.raises(ValueError, match="column: one has to be chosen"):
        stream.describe(tmp_path / "t.npy")
    with pytest.raises(ValueError, match=r"\.csv, \.npy or \.parquet"):
        stream.describe(tmp_path / "t.txt")
    with pytest.raises(FileNotFoundError, match="none.csv"):
        stream.tally(tmp_path / "none.csv")
    with pytest.raises(ValueError, match="^bins must be .{1,200}$"):
        stream.histogram(tmp_path / "t.npy", "é" * 10_000, column=0)
    with pytest.raises(ValueError, match="^column: .{1,400}$"):
        stream.tally(tmp_path / "t.npy", column="c" * 10_000)
    np.save(tmp_path / "w.npy", np.array([[1.0, 1], [2, 1], [3, -1]]))
    with pytest.raises(ValueError, match="piece 1 of 2 rows.*weights"):
        stream.quantile(tmp_path / "w.npy", 0.5, column=0, weights=1, rows=2)
    np.save(tmp_path / "z.npy", np.array([[1.0, 0], [2, 0]]))
    with pytest.raises(ValueError, match="total must be positive"):
        stream.describe(tmp_path / "z.npy", column=0, weights=1)


def test_command(tmp_path):
    np.save(tmp_path / "x.npy", np.arange(101.0))

    def run(*words):
        return subprocess.run([sys.executable, "-m", "vexel.stream", *words], capture_output=True, text=True)

    assert run("quantile", tmp_path / "x.npy", "-q", "0.5", "0.9").stdout.split() == ["0.5", "50.0", "0.9", "90.0"]
    assert run("describe", tmp_path / "x.npy").stdout == f"{vx.describe(np.arange(101.0))}\n"
    failed = run("tally", tmp_path / "no.npy")
    assert failed.returncode == 1 and "no.npy" in failed.stderr and "Traceback" not in failed.stderr
