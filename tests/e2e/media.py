"""Real media, made with ffmpeg."""
import subprocess


def _ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True)


def sound(path, seconds=2):
    path.parent.mkdir(parents=True, exist_ok=True)
    _ffmpeg("-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=48000:duration={seconds}", path)


def film(path, seconds=2, rate=25):
    path.parent.mkdir(parents=True, exist_ok=True)
    _ffmpeg("-f", "lavfi", "-i", f"testsrc2=size=640x360:rate={rate}:duration={seconds}",
            "-f", "lavfi", "-i", f"sine=frequency=330:sample_rate=48000:duration={seconds}",
            "-c:v", "mpeg4", "-c:a", "aac", path)


def picture(path):
    path.parent.mkdir(parents=True, exist_ok=True)
    _ffmpeg("-f", "lavfi", "-i", "testsrc2=size=800x600:duration=1:rate=1", "-frames:v", "1", path)
