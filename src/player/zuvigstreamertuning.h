#pragma once

// Bounds what the media backend's GStreamer pipelines hold of decoded video.
//
// Left alone, a pipeline playing a 720p clip keeps about 28 decoded pictures
// (1.4 MB each) alive: two queues in front of the video sink that each take
// up to 10 MB, and a decoder that runs one frame thread per core, each with
// pictures of its own. None of that buys smoothness: the sink shows one
// picture at a time on the clock, a slow network is absorbed before
// decoding (the download and demuxing queues keep their limits), and one
// core of the build machine decodes a 720p H.264 picture in about 1 ms
// (3.4 ms at 1080p). So the queues carrying decoded video keep at most two
// pictures (the next to show and one more: 66 ms of a 30 fps clip, where the
// decoder needs a few to make one), and video decoders work on one thread;
// together about 25 MB less while playing 720p.
//
// The trimming is a hook on every bin of the process: it applies to what is
// built after install(), whichever thread builds it. A video output makes
// its sink's queue when the page holding it is created, so install() must
// run before the first video page (the app's player factory sees to that).
class ZuviGStreamerTuning
{
public:
    static constexpr unsigned kVideoQueueBuffers = 2;
    static constexpr int kVideoDecoderThreads = 1;

    // Initialises GStreamer if nobody has yet and installs the hook, once per
    // process; later calls do nothing. False when GStreamer cannot start
    // (playback then fails on its own, untrimmed).
    static bool install();
};
