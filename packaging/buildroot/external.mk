include $(sort $(wildcard $(BR2_EXTERNAL_TARVO_EXT_PATH)/package/*/*.mk))
