#include "media/PictureParser.h"

PictureParser::PictureParser(const AVCodecParameters& parameters)
    : parser(av_parser_init(parameters.codec_id)),
      tellsOrder(parameters.codec_id == AV_CODEC_ID_H264 || parameters.codec_id == AV_CODEC_ID_HEVC) {
    if (!parser) return;
    context.reset(avcodec_alloc_context3(nullptr));
    if (!context || avcodec_parameters_to_context(context.get(), &parameters) < 0) {
        parser.reset();
        return;
    }
    parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
}

void PictureParser::Parse(const AVPacket& packet, SampleEntry& entry) {
    if (!parser) return;
    uint8_t* output = nullptr;
    int outputSize = 0;
    av_parser_parse2(parser.get(), context.get(), &output, &outputSize, packet.data, packet.size, packet.pts,
                     packet.dts, packet.pos);
    if (parser->coded_width > 0 && parser->coded_height > 0) {
        codedWidth = parser->coded_width;
        codedHeight = parser->coded_height;
    }
    if (parser->field_order != AV_FIELD_UNKNOWN) fieldOrder = parser->field_order;
    if (!tellsOrder) return;
    entry.hasPictureOrder = true;
    entry.pictureOrder = parser->output_picture_number;
    entry.startsSequence = parser->key_frame == 1;
}
