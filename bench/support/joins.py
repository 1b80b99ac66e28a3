"""Albums of several formats, and what bare GStreamer hears of their tracks one by one."""
import pathlib
import subprocess

SOUND = "audio/x-raw,format=S16LE,rate=48000,channels=2,layout=interleaved"
FORMATS = {
    "flac": "flacenc",
    "mp3": "lamemp3enc target=bitrate cbr=true bitrate=192 ! xingmux ! id3v2mux",
    "opus": "opusenc ! oggmux",
    "m4a": "avenc_aac ! mp4mux faststart=true",
}
TRACKS = 3


def _launch(description):
    subprocess.run(["gst-launch-1.0", "-q", *description.split()], check=True)


def make_albums(folder):
    """The files of each format's album, whose title is the format's name."""
    albums = {}
    for name, encoder in FORMATS.items():
        place = pathlib.Path(folder) / name
        place.mkdir(parents=True)
        albums[name] = [place / f"{track}.{name}" for track in range(1, TRACKS + 1)]
        for track, file in enumerate(albums[name], 1):
            tags = f"title=Track{track},artist=Bench,album={name},track-number=(uint){track}"
            _launch(f"audiotestsrc wave=pink-noise samplesperbuffer=735 num-buffers=100 ! {SOUND} ! "
                    f"audioconvert ! taginject tags={tags} ! {encoder} ! filesink location={file}")
    return albums


def samples(captured):
    return captured.stat().st_size // 4


def samples_alone(file, scratch):
    """How many samples bare GStreamer makes of a file."""
    _launch(f"filesrc location={file} ! decodebin ! audioconvert ! audioresample ! {SOUND} ! "
            f"filesink location={scratch}")
    return samples(scratch)
