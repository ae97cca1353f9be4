// The log of one clip's whole life, from the moment the host loads the plug-in until it unloads it: each step
// of the host with the lines that it leaves. Reading it from top to bottom is the quickest way to learn what
// the plug-in does.
//
// The clip: 5 pictures of 16 x 4 in 8-bit 4:2:2, 25 a second, and 16-bit stereo sound at 8000 Hz. The host is
// the default one: 254016000000 ticks a second, so 10160640000 ticks a picture.
//
// Times, threads and addresses are masked; a '$' shows where a line ends in a blank.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

class ClipLifeLog : public ClipTest {};

// imInit asks the host about every pixel format that it has names for, and the codec library about its types.
constexpr const char* kFormatDump = R"(
Log opened
Application: <host>
----------------------
[imInit] (0)
Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: <address>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
----
Pixel formats ([fcc] : isCompressed hasAlpha isTopLeft - name):
[VUyp] : - A - -  PrPixelFormat_VUYP_4444_32f (err: 0 0 0) - 1886999894
[VUp7] : - A - -  PrPixelFormat_VUYP_4444_32f_709 (err: 0 0 0) - 930108758
[PRgb] : - A - -  PrPixelFormat_PRGB_4444_32f (err: 0 0 0) - 1650938448
[RGB1] : - - T -  PrPixelFormat_RGB_444_10u (err: 0 0 0) - 826427218
[yv1F] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1177646713
[yviF] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1181316729
[Yv12] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 842102361
[Yvi2] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 845772377
[PRgL] : - A - -  PrPixelFormat_PRGB_4444_32f_Linear (err: 0 0 0) - 1281839696
[XRgL] : - - - -  PrPixelFormat_XRGB_4444_32f_Linear (err: 0 0 0) - 1281839704
[yv12] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 842102393
[yvi2] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601 (err: 0 0 0) - 845772409
[Yv1F] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1177646681
[YviF] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange (err: 0 0 0) - 1181316697
[dvn2] : C - T -  PrPixelFormat_NTSCDV25 (err: 0 0 0) - 846100068
[dvp2] : C - T -  PrPixelFormat_PALDV25 (err: 0 0 0) - 846231140
[Yv1f] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1714517593
[Yvif] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1718187609
[Yv17] : - - T -  PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 925988441
[Yvi7] : - - T -  PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 929658457
[yv1f] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1714517625
[yvif] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange (err: 0 0 0) - 1718187641
[yv17] : - - T -  PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 925988473
[yvi7] : - - T -  PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709 (err: 0 0 0) - 929658489
[dvn5] : C - T -  PrPixelFormat_NTSCDV50 (err: 0 0 0) - 896431716
[dvp5] : C - T -  PrPixelFormat_PALDV50 (err: 0 0 0) - 896562788
[dvn7] : C - T -  PrPixelFormat_NTSCDV100_720p (err: 0 0 0) - 929986148
[dvp7] : C - T -  PrPixelFormat_PALDV100_720p (err: 0 0 0) - 930117220
[v210] : - - T -  PrPixelFormat_V210_422_10u_601 (err: 0 0 0) - 808530550
[v211] : - - T -  PrPixelFormat_V210_422_10u_709 (err: 0 0 0) - 825307766
[UYvy] : - - T -  PrPixelFormat_UYVY_422_32f_601 (err: 0 0 0) - 2037799253
[UYv7] : - - T -  PrPixelFormat_UYVY_422_32f_709 (err: 0 0 0) - 930502997
[yuy2] : - - T -  PrPixelFormat_YUYV_422_8u_601 (err: 0 0 0) - 846820729
[yuy3] : - - T -  PrPixelFormat_YUYV_422_8u_709 (err: 0 0 0) - 863597945
[uyvy] : - - T -  PrPixelFormat_UYVY_422_8u_601 (err: 0 0 0) - 2037807477
[uyv7] : - - T -  PrPixelFormat_UYVY_422_8u_709 (err: 0 0 0) - 930511221
[BGaL] : - A - -  PrPixelFormat_BGRA_4444_32f_Linear (err: 0 0 0) - 1281443650
[BGpL] : - A - -  PrPixelFormat_BGRP_4444_32f_Linear (err: 0 0 0) - 1282426690
[BGxL] : - - - -  PrPixelFormat_BGRX_4444_32f_Linear (err: 0 0 0) - 1282950978
[ARgL] : - A - -  PrPixelFormat_ARGB_4444_32f_Linear (err: 0 0 0) - 1281839681
[Xrgb] : - - - -  PrPixelFormat_XRGB_4444_16u (err: 0 0 0) - 1650946648
[Bgrp] : - A - -  PrPixelFormat_BGRP_4444_16u (err: 0 0 0) - 1886545730
[Prgb] : - A - -  PrPixelFormat_PRGB_4444_16u (err: 0 0 0) - 1650946640
[BGra] : - A - -  PrPixelFormat_BGRA_4444_32f (err: 0 0 0) - 1634879298
[bgra] : - A - -  PrPixelFormat_BGRA_4444_8u (err: 0 0 0) - 1634887522
[vuya] : - A - -  PrPixelFormat_VUYA_4444_8u (err: 0 0 0) - 1635349878
[VUYA] : - A - -  PrPixelFormat_VUYA_4444_8u_709 (err: 0 0 0) - 1096373590
[argb] : - A - -  PrPixelFormat_ARGB_4444_8u (err: 0 0 0) - 1650946657
[bgrp] : - A - -  PrPixelFormat_BGRP_4444_8u (err: 0 0 0) - 1886545762
[vuyp] : - A - -  PrPixelFormat_VUYP_4444_8u (err: 0 0 0) - 1887008118
[vup7] : - A - -  PrPixelFormat_VUYP_4444_8u_709 (err: 0 0 0) - 930116982
[prgb] : - A - -  PrPixelFormat_PRGB_4444_8u (err: 0 0 0) - 1650946672
[bgrx] : - - - -  PrPixelFormat_BGRX_4444_8u (err: 0 0 0) - 2020763490
[vuyx] : - - - -  PrPixelFormat_VUYX_4444_8u (err: 0 0 0) - 2021225846
[vux7] : - - - -  PrPixelFormat_VUYX_4444_8u_709 (err: 0 0 0) - 930641270
[xrgb] : - - - -  PrPixelFormat_XRGB_4444_8u (err: 0 0 0) - 1650946680
[dvn1] : C - T -  PrPixelFormat_NTSCDV100_1080i (err: 0 0 0) - 829322852
[dvp1] : C - T -  PrPixelFormat_PALDV100_1080i (err: 0 0 0) - 829453924
[raww] : - - T -  PrPixelFormat_Raw (err: 0 0 0) - 2004312434
[badf] : - - T -  PrPixelFormat_Invalid (err: 0 0 0) - 1717854562
[VUyx] : - - - -  PrPixelFormat_VUYX_4444_32f (err: 0 0 0) - 2021217622
[VUx7] : - - - -  PrPixelFormat_VUYX_4444_32f_709 (err: 0 0 0) - 930633046
[XRgb] : - - - -  PrPixelFormat_XRGB_4444_32f (err: 0 0 0) - 1650938456
[BGrp] : - A - -  PrPixelFormat_BGRP_4444_32f (err: 0 0 0) - 1886537538
[VUya] : - A - -  PrPixelFormat_VUYA_4444_32f (err: 0 0 0) - 1635341654
[vUYa] : - A - -  PrPixelFormat_VUYA_4444_32f_709 (err: 0 0 0) - 1633244534
[ARgb] : - A - -  PrPixelFormat_ARGB_4444_32f (err: 0 0 0) - 1650938433
[BGrx] : - - - -  PrPixelFormat_BGRX_4444_32f (err: 0 0 0) - 2020755266
[Bgra] : - A - -  PrPixelFormat_BGRA_4444_16u (err: 0 0 0) - 1634887490
[Vuya] : - A - -  PrPixelFormat_VUYA_4444_16u (err: 0 0 0) - 1635349846
[Argb] : - A - -  PrPixelFormat_ARGB_4444_16u (err: 0 0 0) - 1650946625
[Bgrx] : - - - -  PrPixelFormat_BGRX_4444_16u (err: 0 0 0) - 2020763458
Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'
----
Orvantis types (can_flip supports_0_32768_range : format):
YES  NO : BGRX32
YES  NO : BGRA32
 NO  NO : BGR24
YES  NO : YUYV
YES  NO : UYVY
 NO  NO : YVYU
 NO  NO : VYUY
 NO  NO : YV12
 NO  NO : I420
 NO  NO : NV12
YES  NO : V210
 NO  NO : V216
 NO  NO : V410
 NO  NO : Y416
YES  NO : RGB10
YES  NO : XRGB32
 NO  NO : RGB24
 NO  NO : RGBX32
YES  NO : ARGB32
 NO  NO : RGBA32
 NO  NO : ABGR32
 NO  NO : XBGR32
 NO  NO : GREY8
 NO  NO : GREY10
 NO  NO : GREY12
 NO  NO : GREY14
 NO  NO : GREY16
 NO  NO : BGR48
 NO  NO : RGB48
 NO  NO : RGBA64
YES YES : BGRA64
YES YES : BGRX64
 NO  NO : ARGB64
 NO  NO : XRGB64
 NO  NO : RGBX64
 NO  NO : ABGR64
 NO  NO : YUV420P8
 NO  NO : YUV422P8
 NO  NO : YUV444P8
 NO  NO : YUVA444P8
 NO  NO : YUV420P10
 NO  NO : YUV422P10
 NO  NO : YUV444P10
 NO  NO : GBRP8
 NO  NO : GBRAP8
 NO  NO : GBRP10
 NO  NO : GBRAP10
 NO  NO : AYUV
YES  NO : VUYX
YES  NO : VUYA
 NO  NO : XYUV
 NO  NO : YUVX
 NO  NO : YUVA
 NO  NO : GBRP12
 NO  NO : GBRAP12
 NO  NO : GBRP14
 NO  NO : GBRAP14
 NO  NO : P010
 NO  NO : P210
 NO  NO : P016
 NO  NO : P216
----
SubTypeInfos: (subType : orvTypeComp : subTypeName)
[O8RA] : (102) RGBA 8-bit      : 'Orvantis 8-bit RGBA'
[O8RG] : (101) RGB 8-bit       : 'Orvantis 8-bit RGB'
[O8YA] : (106) YUVA4444 8-bit  : 'Orvantis 8-bit YUVA 4:4:4:4'
[O8Y4] : (103) YUV444 8-bit    : 'Orvantis 8-bit YUV 4:4:4'
[O8Y2] : (104) YUV422 8-bit    : 'Orvantis 8-bit YUV 4:2:2'
[O8Y0] : (105) YUV420 8-bit    : 'Orvantis 8-bit YUV 4:2:0'
[O8G0] : (107) YUV400 8-bit    : 'Orvantis 8-bit YUV 4:0:0 greyscale'
[O0RA] : (110) RGBA 10-bit     : 'Orvantis 10-bit RGBA'
[O0RG] : (109) RGB 10-bit      : 'Orvantis 10-bit RGB'
[O0Y4] : (118) YUV444 10-bit   : 'Orvantis 10-bit YUV 4:4:4'
[O0Y2] : (108) YUV422 10-bit   : 'Orvantis 10-bit YUV 4:2:2'
[O0Y0] : (123) YUV420 10-bit   : 'Orvantis 10-bit YUV 4:2:0'
[O0G0] : (115) YUV400 10-bit   : 'Orvantis 10-bit YUV 4:0:0 greyscale'
[O2RA] : (112) RGBA 12-bit     : 'Orvantis 12-bit RGBA'
[O2RG] : (111) RGB 12-bit      : 'Orvantis 12-bit RGB'
[O4RA] : (114) RGBA 14-bit     : 'Orvantis 14-bit RGBA'
[O4RG] : (113) RGB 14-bit      : 'Orvantis 14-bit RGB'
----
FormatInfos: (pixelFormat : orvType : colorSpace : isAdobe16u : isTopLeft)
[yuy2] PrPixelFormat_YUYV_422_8u_601       : ( 4) YUYV       : (1) Rec.601  :   : 1
[yuy3] PrPixelFormat_YUYV_422_8u_709       : ( 4) YUYV       : (2) Rec.709  :   : 1
[uyvy] PrPixelFormat_UYVY_422_8u_601       : ( 5) UYVY       : (1) Rec.601  :   : 1
[uyv7] PrPixelFormat_UYVY_422_8u_709       : ( 5) UYVY       : (2) Rec.709  :   : 1
[vuya] PrPixelFormat_VUYA_4444_8u          : (50) VUYA       : (1) Rec.601  :   :  $
[VUYA] PrPixelFormat_VUYA_4444_8u_709      : (50) VUYA       : (2) Rec.709  :   :  $
[vuyx] PrPixelFormat_VUYX_4444_8u          : (49) VUYX       : (1) Rec.601  :   :  $
[vux7] PrPixelFormat_VUYX_4444_8u_709      : (49) VUYX       : (2) Rec.709  :   :  $
[bgra] PrPixelFormat_BGRA_4444_8u          : ( 2) BGRA32     : (2) Rec.709  :   :  $
[argb] PrPixelFormat_ARGB_4444_8u          : (19) ARGB32     : (2) Rec.709  :   :  $
[bgrx] PrPixelFormat_BGRX_4444_8u          : ( 1) BGRX32     : (2) Rec.709  :   :  $
[xrgb] PrPixelFormat_XRGB_4444_8u          : (16) XRGB32     : (2) Rec.709  :   :  $
[v210] PrPixelFormat_V210_422_10u_601      : (11) V210       : (1) Rec.601  :   : 1
[v211] PrPixelFormat_V210_422_10u_709      : (11) V210       : (2) Rec.709  :   : 1
[RGB1] PrPixelFormat_RGB_444_10u           : (15) RGB10      : (2) Rec.709  :   : 1
[Bgra] PrPixelFormat_BGRA_4444_16u         : (31) BGRA64     : (2) Rec.709  : 1 :  $
[Bgrx] PrPixelFormat_BGRX_4444_16u         : (32) BGRX64     : (2) Rec.709  : 1 :  $
    [imNoErr] (0)
)";

TEST_F(ClipLifeLog, TellsEveryStepOfTheHost) {
    auto avi = clips::builder();
    const std::string path = place(u8"clip.avi", avi.build());
    // Where the sound chunks' data lies; the places appear in the log.
    ASSERT_EQ(avi.placementsOf(1).at(0).offset, 468U);
    ASSERT_EQ(avi.placementsOf(1).at(1).offset, 1892U);
    ASSERT_EQ(avi.placementsOf(1).at(4).offset, 6164U);
    logOn();
    start();
    // Loading alone leaves no trace: the switch is not read yet.
    EXPECT_TRUE(logCapture().files().empty());

    // --- the plug-in ---

    EXPECT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    EXPECT_EQ(log().news(), kFormatDump);

    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSupports8] (36)
    [malSupports8] (101)
)");

    EXPECT_EQ(importer().call(host::imGetSupports7, nullptr, nullptr), host::imUnsupported);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSupports7] (28)
    [imUnsupported] (3)
)");

    EXPECT_EQ(importer().getIndFormat(0).result, host::imNoErr);
    EXPECT_EQ(importer().getIndFormat(1).result, host::imBadFormatIndex);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetIndFormat] (14)
index 0: AVIV
    [imNoErr] (0)
----------------------
[imGetIndFormat] (14)
index 1: imBadFormatIndex
    [imBadFormatIndex] (301)
)");

    EXPECT_EQ(importer().getSubTypeNames(host::kFileTypeAviv).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSubTypeNames] (54)
filetype: AVIV
Adding subtype: 'O8RA' : 'Orvantis 8-bit RGBA'
Adding subtype: 'O8RG' : 'Orvantis 8-bit RGB'
Adding subtype: 'O8YA' : 'Orvantis 8-bit YUVA 4:4:4:4'
Adding subtype: 'O8Y4' : 'Orvantis 8-bit YUV 4:4:4'
Adding subtype: 'O8Y2' : 'Orvantis 8-bit YUV 4:2:2'
Adding subtype: 'O8Y0' : 'Orvantis 8-bit YUV 4:2:0'
Adding subtype: 'O8G0' : 'Orvantis 8-bit YUV 4:0:0 greyscale'
Adding subtype: 'O0RA' : 'Orvantis 10-bit RGBA'
Adding subtype: 'O0RG' : 'Orvantis 10-bit RGB'
Adding subtype: 'O0Y4' : 'Orvantis 10-bit YUV 4:4:4'
Adding subtype: 'O0Y2' : 'Orvantis 10-bit YUV 4:2:2'
Adding subtype: 'O0Y0' : 'Orvantis 10-bit YUV 4:2:0'
Adding subtype: 'O0G0' : 'Orvantis 10-bit YUV 4:0:0 greyscale'
Adding subtype: 'O2RA' : 'Orvantis 12-bit RGBA'
Adding subtype: 'O2RG' : 'Orvantis 12-bit RGB'
Adding subtype: 'O4RA' : 'Orvantis 14-bit RGBA'
Adding subtype: 'O4RG' : 'Orvantis 14-bit RGB'
    [imNoErr] (0)
)");

    // --- the file ---

    simhost::Clip clip(importer(), path);
    EXPECT_EQ(clip.openResult(), host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imOpenFile8] (39)
OrvantisImporter::OrvantisImporter()
m_filePathUtf8: ''
m_streamIndex:  -1
Open: '<folder>/clip.avi', stream: 0
    [imNoErr] (0)
)");

    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetInfo8] (37)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
fileInfoRec8P->streamIdx: 0
VideoInfo::VideoInfo()
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite', ptr: <address>
Acquiring suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Time Suite', ptr: <address>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Audio Suite', ptr: <address>
Compressed format info: 16 x 4, YUV422 8-bit (104), Rec.601 (1), range: 1
Decode formats:
    PrPixelFormat_YUYV_422_8u_601 [yuy2]
    PrPixelFormat_YUYV_422_8u_709 [yuy3]
    PrPixelFormat_UYVY_422_8u_601 [uyvy]
    PrPixelFormat_UYVY_422_8u_709 [uyv7]
NumFrames: 5
AVI FPS: 25 / 1 (25.000)
Adjusted FPS: 25 / 1 (25.000)
AudioInfo::AudioInfo()
Audio info:
    wFormatTag:      1
    format guid:     00000001-0000-0010-8000-00aa00389b71
    nChannels:       2
    nSamplesPerSec:  8000
    wBitsPerSample:  16
    dwChannelMask:   0x0
    numSampleFrames: 1600
    [imNoErr] (0)
)");

    EXPECT_EQ(clip.pixelFormats().formats.size(), 4U);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetIndPixelFormat] (27)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Adding pixel format: PrPixelFormat_YUYV_422_8u_601 [yuy2]
    [imNoErr] (0)
----------------------
[imGetIndPixelFormat] (27)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Adding pixel format: PrPixelFormat_YUYV_422_8u_709 [yuy3]
    [imNoErr] (0)
----------------------
[imGetIndPixelFormat] (27)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Adding pixel format: PrPixelFormat_UYVY_422_8u_601 [uyvy]
    [imNoErr] (0)
----------------------
[imGetIndPixelFormat] (27)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Adding pixel format: PrPixelFormat_UYVY_422_8u_709 [uyv7]
    [imNoErr] (0)
----------------------
[imGetIndPixelFormat] (27)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
    [imBadFormatIndex] (301)
)");

    // The host's Properties window.
    EXPECT_EQ(clip.analysis(4096).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imAnalysis] (12)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
buffersize: 4096
AudioInfo::AudioInfo()
AudioInfo::~AudioInfo()
    [imNoErr] (0)
)");

    // First the size, then the table: 8 bytes a picture.
    EXPECT_EQ(clip.dataRates().result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imDataRateAnalysis] (13)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
buffersize: 0
    [imNoErr] (0)
----------------------
[imDataRateAnalysis] (13)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
buffersize: 40
    [imNoErr] (0)
)");

    // --- pictures ---

    // The first request begins the decompression.
    EXPECT_EQ(clip.getFrame(0, host::PrPixelFormat_YUYV_422_8u_601).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSourceVideo] (47)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
outFrame: <address>
inFrameTime: 0
frameIndex:  0 (total: 5)
inNumFrameFormats: 1
inFrameFormats[0]: 0 0 PrPixelFormat_YUYV_422_8u_601 [yuy2]
Starting decompression: YUV422 8-bit [Rec.601] [LIMITED] -> YUYV [Rec.601] (pr: PrPixelFormat_YUYV_422_8u_601 [yuy2])
    [imNoErr] (0)
)");

    // Further ones go on with it.
    EXPECT_EQ(clip.getFrame(4, host::PrPixelFormat_YUYV_422_8u_601).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSourceVideo] (47)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
outFrame: <address>
inFrameTime: 40642560000
frameIndex:  4 (total: 5)
inNumFrameFormats: 1
inFrameFormats[0]: 0 0 PrPixelFormat_YUYV_422_8u_601 [yuy2]
    [imNoErr] (0)
)");

    // Another format begins anew.
    EXPECT_EQ(clip.getFrame(1, host::PrPixelFormat_UYVY_422_8u_709).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSourceVideo] (47)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
outFrame: <address>
inFrameTime: 10160640000
frameIndex:  1 (total: 5)
inNumFrameFormats: 1
inFrameFormats[0]: 0 0 PrPixelFormat_UYVY_422_8u_709 [uyv7]
Pixel format changed, ending decompression
Starting decompression: YUV422 8-bit [Rec.601] [LIMITED] -> UYVY [Rec.709] (pr: PrPixelFormat_UYVY_422_8u_709 [uyv7])
    [imNoErr] (0)
)");

    // The time right behind the last picture.
    EXPECT_EQ(clip.getFrame(5, host::PrPixelFormat_YUYV_422_8u_601).result, host::imFrameNotFound);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetSourceVideo] (47)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
outFrame: <address>
inFrameTime: 50803200000
frameIndex:  5 (total: 5)
frameIndex out of bounds
    [imFrameNotFound] (28)
)");

    // --- sound ---

    EXPECT_EQ(clip.channelLayout().result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imGetAudioChannelLayout] (64)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Audio channel layout (2 channels):
    0: kPrAudioChannelLabel_FrontLeft
    1: kPrAudioChannelLabel_FrontRight
    [imNoErr] (0)
)");

    // 400 sample frames from 200 on: the rest of the first chunk and the head of the second.
    EXPECT_EQ(clip.importAudio(200, 400, 2).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imImportAudio7] (25)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
importAudioRec7P->position: 200
m_audioPosition           : 0
startPos                  : 200
importAudioRec7P->size    : 400
endPos                    : 600
m_numAudioSampleFrames    : 1600
startPosBytes             : 800
sizeBytes                 : 1600
reading : 800, 1268, 480
reading : 1280, 1892, 1120
fill    : 0
    [imNoErr] (0)
)");

    // On from there, over the end: the rest is silence.
    EXPECT_EQ(clip.importAudio(1500, 400, 2).result, host::imNoErr);
    EXPECT_EQ(clip.importAudio(-1, 100, 2).result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imImportAudio7] (25)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
importAudioRec7P->position: 1500
m_audioPosition           : 600
startPos                  : 1500
importAudioRec7P->size    : 400
endPos                    : 1900
m_numAudioSampleFrames    : 1600
startPosBytes             : 6000
sizeBytes                 : 1600
reading : 6000, 7044, 400
fill    : 1200
    [imNoErr] (0)
----------------------
[imImportAudio7] (25)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
importAudioRec7P->position: -1
m_audioPosition           : 1900
startPos                  : 1900
importAudioRec7P->size    : 100
endPos                    : 2000
m_numAudioSampleFrames    : 1600
startPosBytes             : 7600
sizeBytes                 : 400
fill    : 400
    [imNoErr] (0)
)");

    // --- the host needs the file elsewhere, and comes back ---

    EXPECT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_EQ(clip.reopen().result, host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imQuietFile] (8)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
    [imNoErr] (0)
----------------------
[imOpenFile8] (39)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
Open: '<folder>/clip.avi', stream: 0
    [imNoErr] (0)
)");

    // --- frames ahead of need ---

    {
        simhost::AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, host::imNoErr);
        // A second importer on the same file.
        EXPECT_EQ(log().news(), R"(
----------------------
[imCreateAsyncImporter] (46)
OrvantisImporter::OrvantisImporter()
OrvantisAsyncImporter::OrvantisAsyncImporter()
Open: '<folder>/clip.avi', stream: 0
VideoInfo::VideoInfo()
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite', ptr: <address>
Acquiring suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Time Suite', ptr: <address>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Audio Suite', ptr: <address>
Compressed format info: 16 x 4, YUV422 8-bit (104), Rec.601 (1), range: 1
Decode formats:
    PrPixelFormat_YUYV_422_8u_601 [yuy2]
    PrPixelFormat_YUYV_422_8u_709 [yuy3]
    PrPixelFormat_UYVY_422_8u_601 [uyvy]
    PrPixelFormat_UYVY_422_8u_709 [uyv7]
NumFrames: 5
AVI FPS: 25 / 1 (25.000)
Adjusted FPS: 25 / 1 (25.000)
AudioInfo::AudioInfo()
    [imNoErr] (0)
)");

        // The host's thread and the decoding one write side by side; here each by itself.
        const host::imFrameFormat wanted[] = {{16, 4, host::PrPixelFormat_YUYV_422_8u_601}};
        EXPECT_EQ(async.initiate(clip.frameTime(2), wanted), host::aiNoError);
        EXPECT_TRUE(async.getFrame(clip.frameTime(2), wanted).frame.has_value());
        EXPECT_THAT(log().newsByThread(), testing::ElementsAre(R"(
----------------------
[OnInitiateAsyncRead]
REQUEST: Adding: 2, frameTime: 20321280000
    OnInitiateAsyncRead: [aiNoError] (0)
----------------------
[OnGetFrame]
REQUEST: Requesting: 2, frameTime: 20321280000
Decoded 2: PrPixelFormat_YUYV_422_8u_601
    OnGetFrame: [aiNoError] (0), [imNoErr] (0)
)",
                                                               R"(
inFrameTime: 20321280000
frameIndex:  2 (total: 5)
inNumFrameFormats: 1
inFrameFormats[0]: 16 4 PrPixelFormat_YUYV_422_8u_601 [yuy2]
Starting decompression: YUV422 8-bit [Rec.601] [LIMITED] -> YUYV [Rec.601] (pr: PrPixelFormat_YUYV_422_8u_601 [yuy2])
)"));

        // A frame that was not announced is decoded at once.
        EXPECT_TRUE(async.getFrame(clip.frameTime(3), wanted).frame.has_value());
        EXPECT_THAT(log().newsByThread(), testing::ElementsAre(R"(
----------------------
[OnGetFrame]
REQUEST: Requesting: 3, frameTime: 30481920000
REQUEST: ERROR: Frame not found: 3, frameTime: 30481920000
Decoded 3: PrPixelFormat_YUYV_422_8u_601
    OnGetFrame: [aiNoError] (0), [imNoErr] (0)
)",
                                                               R"(
inFrameTime: 30481920000
frameIndex:  3 (total: 5)
inNumFrameFormats: 1
inFrameFormats[0]: 16 4 PrPixelFormat_YUYV_422_8u_601 [yuy2]
)"));

        EXPECT_EQ(async.flush(), host::aiNoError);
        EXPECT_EQ(async.close(), host::aiNoError);
        EXPECT_EQ(log().news(), R"(
----------------------
[OnFlush]
    OnFlush: [aiNoError] (0)
OrvantisAsyncImporter::~OrvantisAsyncImporter()
OrvantisImporter::~OrvantisImporter()
AudioInfo::~AudioInfo()
VideoInfo::~VideoInfo()
Releasing suite: r: 0, v: 1, n: 'Premiere Audio Suite'
Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere Time Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere PPix Suite'
Releasing suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite'
)");
    }

    // --- the end ---

    EXPECT_EQ(clip.close(), host::imNoErr);
    EXPECT_EQ(log().news(), R"(
----------------------
[imCloseFile] (9)
m_filePathUtf8: '<folder>/clip.avi'
m_streamIndex:  0
OrvantisImporter::~OrvantisImporter()
AudioInfo::~AudioInfo()
VideoInfo::~VideoInfo()
Releasing suite: r: 0, v: 1, n: 'Premiere Audio Suite'
Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere Time Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere PPix Suite'
Releasing suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite'
Releasing suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite'
    [imNoErr] (0)
)");

    stop();
    EXPECT_EQ(log().news(), R"(
----------------------
[imShutdown] (1)
Releasing suite: r: 0, v: 3, n: 'Premiere Error Suite'
    [imNoErr] (0)
Module destroy
Log closed
)");
}

}  // namespace
