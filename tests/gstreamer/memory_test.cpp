// SPDX-License-Identifier: BSD-3-Clause
//
// Buffers: when they are mapped, and what happens when they cannot be.
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "media.h"

using media::bytes;

namespace {

constexpr const char* k_coded_caps =
    "video/x-qvr-uncompressed,parsed=true,width=4,height=2,framerate=25/1,interlace-mode=progressive";

// ---- Memory that cannot be mapped

GstMemory* allocate(GstAllocator* allocator, gsize size, GstAllocationParams*) {
    GstMemory* const memory = g_new0(GstMemory, 1);
    gst_memory_init(memory, static_cast<GstMemoryFlags>(0), allocator, nullptr, size, 0, 0, size);
    return memory;
}

void release(GstAllocator*, GstMemory* memory) {
    g_free(memory);
}

gpointer map_nothing(GstMemory*, gsize, GstMapFlags) {
    return nullptr;
}

void unmap_nothing(GstMemory*) {}

void class_init(gpointer klass, gpointer) {
    GST_ALLOCATOR_CLASS(klass)->alloc = allocate;
    GST_ALLOCATOR_CLASS(klass)->free = release;
}

void init(GTypeInstance* instance, gpointer) {
    GstAllocator* const allocator = GST_ALLOCATOR_CAST(instance);
    allocator->mem_type = "nothing";
    allocator->mem_map = map_nothing;
    allocator->mem_unmap = unmap_nothing;
}

GstAllocator* new_unmappable() {
    static const GType k_type =
        g_type_register_static_simple(GST_TYPE_ALLOCATOR, "QvrTestAllocator", sizeof(GstAllocatorClass), class_init,
                                      sizeof(GstAllocator), init, static_cast<GTypeFlags>(0));
    return GST_ALLOCATOR_CAST(gst_object_ref_sink(g_object_new(k_type, nullptr)));
}

// ---- Messages

struct message {
    GQuark domain = 0;
    int code = -1;
    std::string details;
};

std::vector<message> taken(GstBus* bus) {
    std::vector<message> result;
    constexpr auto k_wanted = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_WARNING);
    while (GstMessage* const each = gst_bus_pop_filtered(bus, k_wanted)) {
        GError* error = nullptr;
        gchar* details = nullptr;
        const bool failed = GST_MESSAGE_TYPE(each) == GST_MESSAGE_ERROR;
        (failed ? gst_message_parse_error : gst_message_parse_warning)(each, &error, &details);
        result.push_back({error->domain, error->code, details != nullptr ? details : ""});
        g_error_free(error);
        g_free(details);
        gst_message_unref(each);
    }
    return result;
}

template <class Work>
std::vector<message> messages_of(const char* name, Work work) {
    GstHarness* const harness = gst_harness_new(name);
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(harness->element, bus);
    work(harness);
    std::vector<message> result = taken(bus);
    gst_element_set_bus(harness->element, nullptr);
    gst_object_unref(bus);
    gst_harness_teardown(harness);
    return result;
}

bytes frame() {
    return media::encoded(media::format_named("GRAY8"), 4, 2, test::counting(8));
}

// ---- Whether a buffer's memory is mapped

GstPadProbeReturn look(GstPad*, GstPadProbeInfo*, gpointer data) {
    auto* const buffer = static_cast<GstBuffer*>(data);
    const GstMemory* const memory = gst_buffer_peek_memory(buffer, 0);
    const auto locked = static_cast<guint>(g_atomic_int_get(&memory->mini_object.lockstate)) & GST_LOCK_FLAG_READWRITE;
    EXPECT_EQ(locked, 0u);
    return GST_PAD_PROBE_OK;
}

}  // namespace

TEST(memory, that_cannot_be_mapped_is_no_damage) {
    for (const char* name : {"qvrdec", "qvrenc"}) {
        const bool decodes = name == std::string("qvrdec");
        const auto messages = messages_of(name, [&](GstHarness* harness) {
            GstAllocator* const allocator = new_unmappable();
            gst_harness_set_propose_allocator(harness, allocator, nullptr);
            gst_harness_set_src_caps_str(
                harness, decodes ? k_coded_caps : media::caps_text(media::format_named("GRAY8"), 4, 2).c_str());
            EXPECT_EQ(gst_harness_push(harness, media::buffer_of(decodes ? frame() : test::counting(8))),
                      GST_FLOW_ERROR);
        });
        ASSERT_EQ(messages.size(), 1u) << name;
        EXPECT_EQ(messages[0].domain, GST_RESOURCE_ERROR) << name;
        EXPECT_EQ(messages[0].code, int{GST_RESOURCE_ERROR_NO_SPACE_LEFT}) << name;
    }
}

TEST(memory, a_warning_tells_the_reason_of_its_own_frame) {
    bytes cut = frame();
    cut.pop_back();
    const auto messages = messages_of("qvrdec", [&](GstHarness* harness) {
        gst_harness_set_src_caps_str(harness, k_coded_caps);
        gst_harness_push(harness, media::buffer_of(cut));
        gst_harness_push(harness, gst_buffer_new());
        gst_harness_push(harness, media::buffer_of(frame()));
    });
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_NE(messages[0].details.find("greater than buffer size"), std::string::npos) << messages[0].details;
    EXPECT_NE(messages[1].details.find("that is no frame"), std::string::npos) << messages[1].details;
}

TEST(memory, is_not_mapped_any_more_when_a_frame_goes_on) {
    for (const char* name : {"qvrparse", "qvrdec", "qvrenc"}) {
        SCOPED_TRACE(name);
        GstHarness* const harness = gst_harness_new(name);
        const bool encodes = name == std::string("qvrenc");
        gst_harness_set_src_caps_str(
            harness, encodes ? media::caps_text(media::format_named("GRAY8"), 4, 2).c_str() : k_coded_caps);
        GstBuffer* const in = media::buffer_of(encodes ? test::counting(8) : frame());
        GstPad* const out = gst_element_get_static_pad(harness->element, "src");
        gst_pad_add_probe(out, GST_PAD_PROBE_TYPE_BUFFER, look, in, nullptr);
        EXPECT_EQ(gst_harness_push(harness, gst_buffer_ref(in)), GST_FLOW_OK);
        EXPECT_EQ(gst_harness_buffers_received(harness), 1u);
        gst_object_unref(out);
        gst_harness_teardown(harness);
        gst_buffer_unref(in);
    }
}
